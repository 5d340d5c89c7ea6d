#include "support/base/symbolizer.h"

#include <cxxabi.h>
#include <dlfcn.h>
#include <elf.h>
#include <execinfo.h>
#include <fcntl.h>
#include <link.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "support/time/uncopied.h"

namespace orsanta {

namespace {

// The first capture loads the unwinder and takes memory from the heap, which must happen before there is none.
[[maybe_unused]] const int unwinder_is_loaded = [] {
  void* here = nullptr;
  return backtrace(&here, 1);
}();

// A file as memory while it lives; empty when it cannot be read.
class C_Mapped_File : private C_Uncopied {
 public:
  explicit C_Mapped_File(const char* path) {
    const int file = open(path, O_RDONLY | O_CLOEXEC);
    if (file < 0) return;
    struct stat about {};
    if (fstat(file, &about) == 0 && about.st_size > 0) {
      void* start = mmap(nullptr, static_cast<size_t>(about.st_size), PROT_READ, MAP_PRIVATE, file, 0);
      if (start != MAP_FAILED) {
        m_Start = static_cast<const char*>(start);
        m_Size = static_cast<size_t>(about.st_size);
      }
    }
    close(file);
  }
  ~C_Mapped_File() {
    if (m_Start != nullptr) munmap(const_cast<char*>(m_Start), m_Size);
  }

  // `count` records of type T from `offset` on; null when the file does not hold them.
  template <class T>
  const T* At(uint64_t offset, uint64_t count = 1) const {
    if (offset > m_Size || count > (m_Size - offset) / sizeof(T)) return nullptr;
    return reinterpret_cast<const T*>(m_Start + offset);
  }

 private:
  const char* m_Start = nullptr;
  size_t m_Size = 0;
};

struct C_Symbol {
  const char* name = nullptr;  // null when none was found
  uint64_t distance = 0;       // of the address from the start of the function
};

// The function around `place`, an address as the module's file counts it.
C_Symbol Find_In_Symbol_Table(const C_Mapped_File& file, uint64_t place) {
  const auto* header = file.At<ElfW(Ehdr)>(0);
  if (header == nullptr || std::memcmp(header->e_ident, ELFMAG, SELFMAG) != 0) return {};
  const auto* sections = file.At<ElfW(Shdr)>(header->e_shoff, header->e_shnum);
  if (sections == nullptr) return {};
  for (unsigned i = 0; i < header->e_shnum; ++i) {
    if (sections[i].sh_type != SHT_SYMTAB || sections[i].sh_link >= header->e_shnum) continue;
    const ElfW(Shdr)& names = sections[sections[i].sh_link];
    const uint64_t count = sections[i].sh_size / sizeof(ElfW(Sym));
    const auto* symbols = file.At<ElfW(Sym)>(sections[i].sh_offset, count);
    if (symbols == nullptr) continue;
    for (uint64_t k = 0; k < count; ++k) {
      const ElfW(Sym)& symbol = symbols[k];
      if ((symbol.st_info & 0xF) != STT_FUNC || place < symbol.st_value || place >= symbol.st_value + symbol.st_size) {
        continue;
      }
      const uint64_t rest = symbol.st_name < names.sh_size ? names.sh_size - symbol.st_name : 0;
      const char* name = file.At<char>(names.sh_offset + symbol.st_name, rest);
      if (name != nullptr && std::memchr(name, 0, rest) != nullptr) return {name, place - symbol.st_value};
    }
  }
  return {};
}

void Print(char* out, size_t room, const void* address, const C_Symbol& symbol, const char* module) {
  int status = -1;
  char* readable = abi::__cxa_demangle(symbol.name, nullptr, nullptr, &status);
  std::snprintf(out, room, "%p %s + 0x%llx in %s", address, status == 0 ? readable : symbol.name,
                static_cast<unsigned long long>(symbol.distance), module);
  std::free(readable);
}

}  // namespace

__attribute__((noinline)) void C_Stack::Capture() {
  void* all[Deepest + 1];
  const int count = backtrace(all, Deepest + 1);
  depth = count > 1 ? count - 1 : 0;  // the first is this function
  if (depth > 0) std::memcpy(address, all + 1, static_cast<size_t>(depth) * sizeof(void*));
}

void Frame_Text(const void* return_address, char* out, size_t room) {
  // The call is before the address that it returns to, which may already belong to the next function.
  const char* const call = static_cast<const char*>(return_address) - 1;
  Dl_info info{};
  link_map* map = nullptr;
  if (dladdr1(call, &info, reinterpret_cast<void**>(&map), RTLD_DL_LINKMAP) == 0 || map == nullptr) {
    std::snprintf(out, room, "%p in no module", return_address);
    return;
  }
  // The program itself may be known by the relative name that it was started with.
  const char* path = map->l_name != nullptr && map->l_name[0] != '\0' ? map->l_name : "/proc/self/exe";
  const char* module =
      std::strrchr(info.dli_fname, '/') != nullptr ? std::strrchr(info.dli_fname, '/') + 1 : info.dli_fname;
  if (info.dli_sname != nullptr) {
    Print(out, room, return_address,
          {info.dli_sname, static_cast<uint64_t>(call + 1 - static_cast<const char*>(info.dli_saddr))}, module);
    return;
  }
  const C_Mapped_File file(path);
  const uint64_t place = reinterpret_cast<uintptr_t>(call) - map->l_addr;
  C_Symbol symbol = Find_In_Symbol_Table(file, place);
  if (symbol.name != nullptr) {
    ++symbol.distance;
    Print(out, room, return_address, symbol, module);
  } else {
    std::snprintf(out, room, "%p %s + 0x%llx", return_address, module, static_cast<unsigned long long>(place) + 1);
  }
}

}  // namespace orsanta
