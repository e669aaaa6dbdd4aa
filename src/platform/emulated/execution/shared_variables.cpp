#include "platform/emulated/execution/shared_variables.h"

#include <dlfcn.h>
#include <elf.h>
#include <link.h>

#include <cstdint>
#include <cstring>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "platform/emulated/runtime/guard.h"

struct TlsIndex {
  std::size_t module;
  std::size_t offset;
};
extern "C" void* __tls_get_addr(TlsIndex* index);

namespace zel::device {
namespace {

struct Variable {
  std::size_t offset;
  std::size_t bytes;
};

struct Module {
  std::size_t tlsNumber = 0;
  std::vector<Variable> variables;
};

// The number that the loader gives the thread-local variables of the object at this base address.
std::size_t tlsNumberOf(const void* base) {
  struct Search {
    const void* base;
    std::size_t number;
  } search{base, 0};
  ::dl_iterate_phdr(
      [](dl_phdr_info* object, std::size_t, void* data) {
        auto* const wanted = static_cast<Search*>(data);
        for (unsigned k = 0; k < object->dlpi_phnum; ++k) {
          const auto& header = object->dlpi_phdr[k];
          const auto begin = object->dlpi_addr + header.p_vaddr;
          const auto place = reinterpret_cast<std::uintptr_t>(wanted->base);
          if (header.p_type != PT_LOAD || place - begin >= header.p_memsz) continue;
          wanted->number = object->dlpi_tls_modid;
          return 1;
        }
        return 0;
      },
      &search);
  return search.number;
}

template <typename T>
std::vector<T> readTable(std::ifstream& file, const ElfW(Shdr) & section) {
  std::vector<T> table(section.sh_size / sizeof(T));
  file.seekg(static_cast<std::streamoff>(section.sh_offset));
  file.read(reinterpret_cast<char*>(table.data()),
            static_cast<std::streamsize>(table.size() * sizeof(T)));
  return table;
}

// Thread-local symbols whose mangled name says that they belong to a function.
std::vector<Variable> variablesIn(const char* path) {
  std::ifstream file(path, std::ios::binary);
  ElfW(Ehdr) header{};
  file.read(reinterpret_cast<char*>(&header), sizeof header);
  ElfW(Shdr) list{};
  list.sh_offset = header.e_shoff;
  list.sh_size = sizeof(ElfW(Shdr)) * header.e_shnum;
  const auto sections = readTable<ElfW(Shdr)>(file, list);
  std::vector<Variable> variables;
  for (const auto& section : sections) {
    if (section.sh_type != SHT_SYMTAB) continue;
    const auto names = readTable<char>(file, sections.at(section.sh_link));
    for (const auto& symbol : readTable<ElfW(Sym)>(file, section)) {
      const std::string_view name(names.data() + symbol.st_name);
      if (ELF64_ST_TYPE(symbol.st_info) == STT_TLS && symbol.st_shndx != SHN_UNDEF &&
          name.starts_with("_ZZ"))
        variables.push_back({symbol.st_value, symbol.st_size});
    }
  }
  return variables;
}

Module thisModule() {
  Dl_info here{};
  if (::dladdr(reinterpret_cast<const void*>(&poisonSharedVariables), &here) == 0) return {};
  const bool isProgram = std::strchr(here.dli_fname, '/') == nullptr;
  return {tlsNumberOf(here.dli_fbase), variablesIn(isProgram ? "/proc/self/exe" : here.dli_fname)};
}

}  // namespace

void poisonSharedVariables(unsigned pattern) {
  static const Module module = thisModule();
  for (const auto& [offset, bytes] : module.variables) {
    TlsIndex place{module.tlsNumber, offset};
    poison(__tls_get_addr(&place), bytes, pattern);
  }
}

}  // namespace zel::device
