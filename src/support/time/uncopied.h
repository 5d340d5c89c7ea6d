// C_Uncopied: base of the classes whose objects are not copied, because each stands for something of its own.
#pragma once

namespace orsanta {

class C_Uncopied {
 public:
  C_Uncopied(const C_Uncopied&) = delete;
  C_Uncopied& operator=(const C_Uncopied&) = delete;

 protected:
  C_Uncopied() = default;
  ~C_Uncopied() = default;
};

}  // namespace orsanta
