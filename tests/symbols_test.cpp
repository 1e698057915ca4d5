// The border of the built module, as its file states it to the loader.
#include <dlfcn.h>
#include <elf.h>

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using Names = std::set<std::string>;

// A shared object as the loader sees it: segments, the dynamic section and its symbols.
class SharedObject {
 public:
  explicit SharedObject(const char* path) {
    bytes_.resize(std::filesystem::file_size(path));
    std::ifstream(path, std::ios::binary)
        .read(bytes_.data(), static_cast<std::streamsize>(bytes_.size()));
    if (bytes_.size() < sizeof(Elf64_Ehdr)) throw std::runtime_error(path);
    for (const auto& section : Table<Elf64_Shdr>(Header().e_shoff, Header().e_shnum)) {
      if (section.sh_type == SHT_DYNAMIC)
        dynamic_ = Table<Elf64_Dyn>(section.sh_offset, section.sh_size / sizeof(Elf64_Dyn));
      if (section.sh_type != SHT_DYNSYM) continue;
      symbols_ = Table<Elf64_Sym>(section.sh_offset, section.sh_size / sizeof(Elf64_Sym));
      texts_ = At<Elf64_Shdr>(Header().e_shoff + section.sh_link * sizeof(Elf64_Shdr))->sh_offset;
    }
  }

  std::vector<Elf64_Phdr> Segments(Elf64_Word type) const {
    std::vector<Elf64_Phdr> found;
    for (const auto& segment : Table<Elf64_Phdr>(Header().e_phoff, Header().e_phnum))
      if (segment.p_type == type) found.push_back(segment);
    return found;
  }

  std::vector<std::uint64_t> Entries(std::int64_t tag) const {
    std::vector<std::uint64_t> found;
    for (const Elf64_Dyn& entry : dynamic_)
      if (entry.d_tag == tag) found.push_back(entry.d_un.d_val);
    return found;
  }

  std::uint64_t Flags(std::int64_t tag) const {
    const auto found = Entries(tag);
    return found.empty() ? 0 : found[0];
  }

  Names Texts(std::int64_t tag) const {
    Names names;
    for (const std::uint64_t offset : Entries(tag)) names.insert(At<char>(texts_ + offset));
    return names;
  }

  Names Exports() const { return Select(true); }
  Names Imports() const { return Select(false); }

  const Elf64_Sym& Symbol(const std::string& name) const {
    for (const Elf64_Sym& symbol : symbols_)
      if (name == At<char>(texts_ + symbol.st_name)) return symbol;
    throw std::runtime_error("no symbol " + name);
  }

 private:
  template <typename Record>
  const Record* At(std::size_t offset) const {
    return reinterpret_cast<const Record*>(bytes_.data() + offset);
  }

  template <typename Record>
  std::vector<Record> Table(std::size_t offset, std::size_t count) const {
    return {At<Record>(offset), At<Record>(offset) + count};
  }

  const Elf64_Ehdr& Header() const { return *At<Elf64_Ehdr>(0); }

  // Weak imports are left out: nobody has to provide those.
  Names Select(bool defined) const {
    Names names;
    for (const Elf64_Sym& symbol : symbols_)
      if ((symbol.st_shndx != SHN_UNDEF) == defined &&
          (defined || ELF64_ST_BIND(symbol.st_info) == STB_GLOBAL))
        names.insert(At<char>(texts_ + symbol.st_name));
    names.erase("");
    return names;
  }

  std::vector<char> bytes_;
  std::vector<Elf64_Dyn> dynamic_;
  std::vector<Elf64_Sym> symbols_;
  std::size_t texts_ = 0;
};

bool IsProvidedBy(const Names& libraries, const std::string& symbol) {
  for (const std::string& library : libraries) {
    void* handle = dlopen(library.c_str(), RTLD_LAZY | RTLD_LOCAL);
    const bool provided = handle != nullptr && dlsym(handle, symbol.c_str()) != nullptr;
    if (handle != nullptr) dlclose(handle);
    if (provided) return true;
  }
  return false;
}

// Everything is hidden but what platform/include declares, and these two groups of the
// simulator's own: so what the simulator exports beside them is the declared interface.
Names DeclaredInterface() {
  Names declared = {"_ZN4VELA11APIResponse10SetSuccessERKN4Json5ValueE"};
  for (const std::string& name : SharedObject(VELA_SIMULATOR).Exports())
    if (!name.starts_with("VELASimulator") && !name.starts_with("VELAPlatform"))
      declared.insert(name);
  return declared;
}

TEST(Module, ExportsItsTableAndNothingElse) {
  EXPECT_EQ(SharedObject(VELA_MODULE).Exports(), (Names{"GetAPITable", "gTable"}));
}

TEST(Module, ImportsOnlyTheDeclaredPlatformInterface) {
  const SharedObject module(VELA_MODULE);
  const Names libraries = module.Texts(DT_NEEDED);
  const Names declared = DeclaredInterface();
  int ofPlatform = 0;
  for (const std::string& symbol : module.Imports()) {
    if (IsProvidedBy(libraries, symbol)) continue;
    ++ofPlatform;
    EXPECT_TRUE(declared.contains(symbol)) << symbol;
  }
  EXPECT_GT(ofPlatform, 30) << "the platform must stay open until the server loads the module";
}

TEST(Module, IsNamedAndStaysLoaded) {
  const SharedObject module(VELA_MODULE);
  EXPECT_EQ(module.Texts(DT_SONAME), Names{"VELA.Core.System.SystemHealth.so"});
  EXPECT_TRUE(module.Flags(DT_FLAGS_1) & DF_1_NODELETE) << "documents refer to its constant keys";
}

TEST(Module, HasNoTextRelocations) {
  const SharedObject module(VELA_MODULE);
  EXPECT_TRUE(module.Entries(DT_TEXTREL).empty());
  EXPECT_FALSE(module.Flags(DT_FLAGS) & DF_TEXTREL);
}

TEST(Module, KeepsItsTableInMemoryThatTheLoaderMakesReadOnly) {
  const SharedObject module(VELA_MODULE);
  const Elf64_Sym& table = module.Symbol("gTable");
  EXPECT_EQ(table.st_size, 64U);
  const auto protectedAfterwards = module.Segments(PT_GNU_RELRO);
  ASSERT_EQ(protectedAfterwards.size(), 1U);
  const Elf64_Phdr& segment = protectedAfterwards[0];
  EXPECT_GE(table.st_value, segment.p_vaddr);
  EXPECT_LE(table.st_value + table.st_size, segment.p_vaddr + segment.p_memsz);
}

}  // namespace
