#include "software.h"

#include <elf.h>
#include <link.h>

#include <cstdio>
#include <cstring>

#include "orsanta/version.h"

namespace app {

namespace {

constexpr size_t Shown_Bytes = 8;  // of a build id

size_t Padded(size_t size) {
  return (size + 3) / 4 * 4;
}

std::string Build_Id(const dl_phdr_info& module) {
  for (int i = 0; i < module.dlpi_phnum; ++i) {
    const ElfW(Phdr)& segment = module.dlpi_phdr[i];
    if (segment.p_type != PT_NOTE) continue;
    const char* place = reinterpret_cast<const char*>(module.dlpi_addr + segment.p_vaddr);  // NOLINT: a number there
    const char* end = place + segment.p_memsz;
    while (place + sizeof(ElfW(Nhdr)) <= end) {
      ElfW(Nhdr) note;
      std::memcpy(&note, place, sizeof note);
      const char* id = place + sizeof note + Padded(note.n_namesz);
      if (note.n_type == NT_GNU_BUILD_ID && std::strncmp(place + sizeof note, "GNU", note.n_namesz) == 0) {
        std::string text;
        for (size_t k = 0; k < note.n_descsz && k < Shown_Bytes; ++k) {
          char byte[3];
          std::snprintf(byte, sizeof byte, "%02x", static_cast<unsigned char>(id[k]));
          text += byte;
        }
        return text;
      }
      place = id + Padded(note.n_descsz);
    }
  }
  return "-";
}

int Add_Module(dl_phdr_info* module, size_t /*size*/, void* out) {
  auto& text = *static_cast<std::string*>(out);
  const std::string path = module->dlpi_name;
  const std::string name = path.substr(path.rfind('/') + 1);
  if (path.empty() && text.empty()) text = std::string("orsanta ") + ORSANTA_VERSION + " (" + Build_Id(*module) + ")";
  for (const char* shown : {"liborsanta.so", "libtremalink.so"})  // the file's name goes on with a version
    if (name.starts_with(shown)) text += std::string(", ") + shown + " (" + Build_Id(*module) + ")";
  return 0;
}

}  // namespace

std::string Software() {
  std::string text;
  dl_iterate_phdr(Add_Module, &text);
  return text;
}

}  // namespace app
