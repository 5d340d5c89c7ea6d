#include "software.h"

#include <elf.h>
#include <link.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <vector>

#include "orsanta/version.h"
#include "simulator_loaded.h"

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

struct C_Module {
  std::string name, path, build_id;
};

// The program and the libraries that measure, in the order in which they were loaded.
std::vector<C_Module> Modules() {
  std::vector<C_Module> modules;
  dl_iterate_phdr(
      [](dl_phdr_info* module, size_t, void* out) {
        auto& list = *static_cast<std::vector<C_Module>*>(out);
        const std::string path = std::filesystem::path(module->dlpi_name).lexically_normal();
        const std::string file = path.substr(path.rfind('/') + 1);
        if (path.empty() && list.empty())
          list.push_back({std::string("orsanta ") + ORSANTA_VERSION, path, Build_Id(*module)});
        for (const char* name : {"liborsanta.so", "libtremalink.so"})  // the file's name goes on with a version
          if (file.starts_with(name)) list.push_back({name, path, Build_Id(*module)});
        return 0;
      },
      &modules);
  return modules;
}

}  // namespace

std::string Software() {
  std::string text;
  for (const C_Module& module : Modules())
    text += (text.empty() ? "" : ", ") + module.name + " (" + module.build_id + ")";
  return text;
}

std::string Software_Lines() {
  std::string text;
  for (const C_Module& module : Modules()) {
    text += (text.empty() ? "" : "\n") + module.name + " (build " + module.build_id + ")";
    if (module.name == "libtremalink.so") text += On_Simulator() ? ", the simulator" : ", a machine's";
    if (!module.path.empty()) text += ", " + module.path;
  }
  return text;
}

}  // namespace app
