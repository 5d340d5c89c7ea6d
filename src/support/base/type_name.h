// The readable name of a type, without the namespaces of this system. Any thread.
#pragma once

#include <string>
#include <typeinfo>

namespace orsanta {

std::string Type_Name(const std::type_info& type);

}  // namespace orsanta
