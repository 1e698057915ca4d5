// A process whose locale writes numbers with a comma, for the C library and for C++ alike.
#pragma once

#include <clocale>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <locale>
#include <string>

// Brings the C library's locale along, since a bare machine has none with a comma: the file
// below is what localedef writes for LC_NUMERIC.
class CommaLocale {
 public:
  CommaLocale() : before_(std::locale::global(std::locale(std::locale(), new Comma))) {
    std::string folder = std::filesystem::temp_directory_path() / ("locale-" + std::string(6, 'X'));
    folder_ = mkdtemp(folder.data());
    std::filesystem::create_directory(folder_ / "comma");
    // Six texts by their offsets: point, separator, grouping, the first two as wide characters,
    // the character set.
    constexpr std::uint32_t head[] = {0x20031115U ^ LC_NUMERIC, 6, 32, 33, 34, 36, 40, 44};
    constexpr std::uint32_t texts[] = {',', ',', 0, 'U' | 'T' << 8 | 'F' << 16 | '8' << 24, 0};
    std::ofstream(folder_ / "comma" / "LC_NUMERIC", std::ios::binary)
        .write(reinterpret_cast<const char*>(head), sizeof head)
        .write(reinterpret_cast<const char*>(texts), sizeof texts);
    setenv("LOCPATH", folder_.c_str(), 1);
    std::setlocale(LC_NUMERIC, "comma");
  }

  ~CommaLocale() {
    std::setlocale(LC_NUMERIC, "C");
    unsetenv("LOCPATH");
    std::locale::global(before_);
    std::filesystem::remove_all(folder_);
  }

  CommaLocale(const CommaLocale&) = delete;
  CommaLocale& operator=(const CommaLocale&) = delete;

 private:
  struct Comma : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
  };

  std::locale before_;
  std::filesystem::path folder_;
};
