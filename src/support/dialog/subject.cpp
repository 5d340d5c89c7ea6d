#include "support/dialog/subject.h"

#include <utility>

#include "support/dialog/front.h"

namespace orsanta {

namespace {
thread_local const C_Subject_Scope* the_innermost = nullptr;
}  // namespace

std::wstring C_Subject::Title() const {
  if (station == 0) return words;
  return words.empty() ? Station_Name(station) : Station_Name(station) + L" " + words;
}

const C_Subject& Present_Subject() {
  static const C_Subject none;
  return the_innermost != nullptr ? the_innermost->m_Subject : none;
}

C_Subject_Scope::C_Subject_Scope(C_Subject subject) : m_Subject(std::move(subject)), m_Outer(the_innermost) {
  the_innermost = this;
}

C_Subject_Scope::~C_Subject_Scope() {
  the_innermost = m_Outer;
}

}  // namespace orsanta
