#include "support/base/type_name.h"

#include <cxxabi.h>

#include <cstdlib>
#include <memory>
#include <string_view>

namespace orsanta {

std::string Type_Name(const std::type_info& type) {
  int status = 0;
  const std::unique_ptr<char, decltype(&std::free)> readable(
      abi::__cxa_demangle(type.name(), nullptr, nullptr, &status), &std::free);
  std::string name = status == 0 ? readable.get() : type.name();
  for (const std::string_view own : {"orsanta::", "(anonymous namespace)::"})
    for (size_t at = name.find(own); at != std::string::npos; at = name.find(own, at)) name.erase(at, own.size());
  return name;
}

}  // namespace orsanta
