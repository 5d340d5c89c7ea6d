#include "support/dialog/subject.h"

#include <utility>

#include "support/dialog/front.h"
#include "support/time/thread_value.h"

namespace orsanta {

namespace {

struct C_Innermost {
  const C_Subject_Scope* scope = nullptr;
};

}  // namespace

std::wstring C_Subject::Title() const {
  if (station == 0) return words;
  return words.empty() ? Station_Name(station) : Station_Name(station) + L" " + words;
}

const C_Subject& Present_Subject() {
  static const C_Subject none;
  const C_Subject_Scope* const innermost = Of_This_Thread<C_Innermost>().scope;
  return innermost != nullptr ? innermost->m_Subject : none;
}

C_Subject_Scope::C_Subject_Scope(C_Subject subject)
    : m_Subject(std::move(subject)), m_Outer(std::exchange(Of_This_Thread<C_Innermost>().scope, this)) {}

C_Subject_Scope::~C_Subject_Scope() {
  Of_This_Thread<C_Innermost>().scope = m_Outer;
}

}  // namespace orsanta
