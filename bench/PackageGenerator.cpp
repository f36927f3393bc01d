#include "PackageGenerator.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "Process.h"

namespace odlex::bench {
namespace {

constexpr std::size_t kFilesPerDirectory = 100;
constexpr std::size_t kFilesPerFeature = 1000;
constexpr std::size_t kFilesPerMedia = 10000;
constexpr std::size_t kExtraProperties = 40;

// A deterministic pseudo-random stream, so every run builds the same packages.
std::uint64_t mix(std::uint64_t x) {
  x += 0x9E3779B97F4A7C15ull;
  x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9ull;
  x = (x ^ (x >> 27)) * 0x94D049BB133111EBull;
  return x ^ (x >> 31);
}

std::string numbered(const char* format, std::size_t n) {
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, format, n);
  return buffer;
}

std::string guid(std::uint64_t seed) {
  const std::uint64_t a = mix(seed);
  const std::uint64_t b = mix(a);
  char buffer[40];
  std::snprintf(buffer, sizeof buffer, "{%08X-%04X-%04X-%04X-%012llX}",
                static_cast<unsigned>(a >> 32), static_cast<unsigned>((a >> 16) & 0xFFFF),
                static_cast<unsigned>(a & 0xFFFF), static_cast<unsigned>(b >> 48),
                static_cast<unsigned long long>(b & 0xFFFFFFFFFFFFull));
  return buffer;
}

// One .idt file: the column names, the column types, the table name with its key columns,
// then one tab-separated line per row.
class IdtFile {
 public:
  IdtFile(const std::filesystem::path& path, const std::string& columns, const std::string& types,
          const std::string& tableAndKeys)
      : out_(path) {
    out_ << columns << "\r\n" << types << "\r\n" << tableAndKeys << "\r\n";
  }

  // Flushes the file; throws when any write failed.
  void close() {
    out_.close();
    if (!out_) {
      throw std::runtime_error("cannot write an .idt file");
    }
  }

  void row(const std::vector<std::string>& cells) {
    for (std::size_t i = 0; i < cells.size(); ++i) {
      out_ << (i ? "\t" : "") << cells[i];
    }
    out_ << "\r\n";
  }

 private:
  std::ofstream out_;
};

std::string directoryOf(std::size_t file) {
  return numbered("dir%04zu", file / kFilesPerDirectory);
}
std::string featureOf(std::size_t file) {
  return numbered("feat%03zu", file / kFilesPerFeature);
}
std::size_t countOf(std::size_t files, std::size_t perGroup) {
  return (files + perGroup - 1) / perGroup;
}

void writeDirectory(const std::filesystem::path& dir, std::size_t files) {
  IdtFile idt(dir / "Directory.idt", "Directory\tDirectory_Parent\tDefaultDir", "s72\tS72\tl255",
              "Directory\tDirectory");
  idt.row({"TARGETDIR", "", "SourceDir"});
  idt.row({"ProgramFilesFolder", "TARGETDIR", "."});
  idt.row({"INSTALLDIR", "ProgramFilesFolder", "ODLEXB~1|Odlex Bench"});
  for (std::size_t d = 0; d < countOf(files, kFilesPerDirectory); ++d) {
    idt.row({numbered("dir%04zu", d), "INSTALLDIR",
             numbered("FOLDER~%zu|", d % 9 + 1) + numbered("folder%04zu", d)});
  }
  idt.close();
}

void writeFeatures(const std::filesystem::path& dir, std::size_t files) {
  IdtFile idt(dir / "Feature.idt",
              "Feature\tFeature_Parent\tTitle\tDescription\tDisplay\tLevel\tDirectory_\tAttributes",
              "s38\tS38\tL64\tL255\tI2\ti2\tS72\ti2", "Feature\tFeature");
  // At least one feature, so that even the package without files has one to add components to.
  for (std::size_t f = 0; f < std::max<std::size_t>(1, countOf(files, kFilesPerFeature)); ++f) {
    idt.row({numbered("feat%03zu", f), f ? "feat000" : "", numbered("Feature %zu", f),
             numbered("Installs the files of group %zu.", f), numbered("%zu", 2 * f + 1), "1",
             "INSTALLDIR", "0"});
  }
  idt.close();
}

void writeComponentsAndFiles(const std::filesystem::path& dir, std::size_t files) {
  IdtFile components(dir / "Component.idt",
                     "Component\tComponentId\tDirectory_\tAttributes\tCondition\tKeyPath",
                     "s72\tS38\ts72\ti2\tS255\tS72", "Component\tComponent");
  IdtFile featureComponents(dir / "FeatureComponents.idt", "Feature_\tComponent_", "s38\ts72",
                            "FeatureComponents\tFeature_\tComponent_");
  IdtFile fileTable(dir / "File.idt",
                    "File\tComponent_\tFileName\tFileSize\tVersion\tLanguage\tAttributes\tSequence",
                    "s72\ts72\tl255\ti4\tS72\tS20\tI2\ti4", "File\tFile");
  static const char* const kExtensions[] = {"dll", "exe", "txt", "xml", "dat"};
  for (std::size_t i = 0; i < files; ++i) {
    const std::string extension = kExtensions[mix(i) % 5];
    const std::string name = numbered("file%05zu.", i) + extension;
    const std::string component = numbered("cmp%05zu", i);
    const bool versioned = extension == "dll" || extension == "exe";
    components.row({component, guid(i), directoryOf(i), versioned ? "0" : "8",
                    i % 17 == 0 ? "VersionNT >= 601" : "", name});
    featureComponents.row({featureOf(i), component});
    fileTable.row(
        {name, component, numbered("FILE%04zu~1.", i % 10000) + extension + "|" + name,
         std::to_string(mix(i + 7) % 5000000 + 100),
         versioned ? numbered("10.0.%zu.", i % 20000) + std::to_string(mix(i) % 1000) : "",
         versioned ? "1033" : "", i % 3 ? "512" : "", std::to_string(i + 1)});
  }
  components.close();
  featureComponents.close();
  fileTable.close();
}

void writeMedia(const std::filesystem::path& dir, std::size_t files) {
  IdtFile idt(dir / "Media.idt", "DiskId\tLastSequence\tDiskPrompt\tCabinet\tVolumeLabel\tSource",
              "i2\ti4\tL64\tS255\tS32\tS72", "Media\tDiskId");
  const std::size_t media = countOf(files, kFilesPerMedia);
  for (std::size_t m = 0; m < media; ++m) {
    idt.row({std::to_string(m + 1), std::to_string(std::min(files, (m + 1) * kFilesPerMedia)), "",
             numbered("#data%04zu.cab", m + 1), "", ""});
  }
  idt.close();
}

void writeProperties(const std::filesystem::path& dir) {
  IdtFile idt(dir / "Property.idt", "Property\tValue", "s72\tl0", "Property\tProperty");
  idt.row({"ProductCode", guid(1000001)});
  idt.row({"UpgradeCode", guid(1000002)});
  idt.row({"ProductName", "Odlex Bench Product"});
  idt.row({"ProductVersion", "1.2.3.4"});
  idt.row({"ProductLanguage", "1033"});
  idt.row({"Manufacturer", "Odlex Bench Corporation"});
  idt.row({"ALLUSERS", "1"});
  for (std::size_t p = 0; p < kExtraProperties; ++p) {
    idt.row({numbered("BENCH_PROPERTY_%02zu", p), numbered("Value of bench property %zu", p)});
  }
  idt.close();
}

// One registry value per component, and a shortcut to the file of every tenth one.
void writeRegistryAndShortcuts(const std::filesystem::path& dir, std::size_t files) {
  IdtFile registry(dir / "Registry.idt", "Registry\tRoot\tKey\tName\tValue\tComponent_",
                   "s72\ti2\tl255\tL255\tL0\ts72", "Registry\tRegistry");
  IdtFile shortcuts(dir / "Shortcut.idt",
                    "Shortcut\tDirectory_\tName\tComponent_\tTarget\tArguments\tDescription\t"
                    "Hotkey\tIcon_\tIconIndex\tShowCmd\tWkDir",
                    "s72\ts72\tl128\ts72\ts72\tS255\tL255\tI2\tS72\tI2\tI2\tS72",
                    "Shortcut\tShortcut");
  for (std::size_t i = 0; i < files; ++i) {
    const std::string component = numbered("cmp%05zu", i);
    registry.row({numbered("reg%05zu", i), "2", "Software\\Odlex Bench\\" + component, "Installed",
                  numbered("#%zu", i), component});
    if (i % 10 == 0) {
      shortcuts.row({numbered("sc%05zu", i), directoryOf(i),
                     numbered("SHORT~%zu|", i % 9 + 1) + numbered("Shortcut %zu", i), component,
                     "[" + directoryOf(i) + "]", "", "", "", "", "", "", ""});
    }
  }
  registry.close();
  shortcuts.close();
}

}  // namespace

std::filesystem::path ensurePackage(const std::filesystem::path& cacheDir, std::size_t fileCount,
                                    PackageContents contents) {
  const bool withModel = contents == PackageContents::kWithRegistryAndShortcuts;
  const std::filesystem::path package =
      cacheDir / numbered(withModel ? "model-%zu.msi" : "files-%zu.msi", fileCount);
  if (std::filesystem::exists(package)) {
    return package;
  }
  const std::filesystem::path idtDir =
      cacheDir / numbered(withModel ? "model-idt-%zu" : "idt-%zu", fileCount);
  std::filesystem::create_directories(idtDir);
  writeDirectory(idtDir, fileCount);
  writeFeatures(idtDir, fileCount);
  writeComponentsAndFiles(idtDir, fileCount);
  writeMedia(idtDir, fileCount);
  writeProperties(idtDir);
  std::vector<std::string> tables = {"Directory", "Feature", "Component", "FeatureComponents",
                                     "File",      "Media",   "Property"};
  if (withModel) {
    writeRegistryAndShortcuts(idtDir, fileCount);
    tables.insert(tables.end(), {"Registry", "Shortcut"});
  }

  // Built under a temporary name, so an interrupted build is never taken for a cached package.
  const std::filesystem::path partial = package.string() + ".partial";
  std::filesystem::remove(partial);
  std::vector<std::string> argv = {"msibuild", partial.string()};
  for (const std::string& table : tables) {
    argv.push_back("-i");
    argv.push_back((idtDir / (table + ".idt")).string());
  }
  // msibuild takes the summary information's optional arguments up to the end of the line,
  // so it goes last.
  argv.insert(argv.end(),
              {"-s", "Odlex bench package", "Odlex bench", "Intel;1033", guid(1000003)});
  if (runProgram(argv) != 0) {
    throw std::runtime_error("msibuild failed to build " + package.string());
  }
  std::filesystem::rename(partial, package);
  std::filesystem::remove_all(idtDir);
  return package;
}

}  // namespace odlex::bench
