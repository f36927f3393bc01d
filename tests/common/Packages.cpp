#include "common/Packages.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <memory>
#include <string>

#include "common/Container.h"
#include "common/Oracle.h"
#include "common/TempDir.h"

namespace odlex::test {
namespace {

namespace fs = std::filesystem;

BuiltPackage failed(std::string why) {
  return {fs::path(), std::move(why)};
}

BuiltPackage buildWixl(const fs::path& dir) {
  writeWixlPayload(dir);
  fs::path out = dir / "wixl.msi";
  // wixl looks for the files a package refers to in its working directory.
  ProcessResult run =
      runProcess({"wixl", "-o", out.string(), fixturePath("wixl/product.wxs").string()}, dir);
  if (!run.ok())
    return failed("wixl: " + run.describe());
  return {out, {}};
}

BuiltPackage buildFromIdt(const fs::path& sources, const fs::path& out) {
  ::testing::AssertionResult imported = msibuildImport(out, idtFilesIn(sources));
  if (!imported)
    return failed(imported.message());
  return {out, {}};
}

BuiltPackage buildIdt(const fs::path& dir) {
  BuiltPackage built = buildFromIdt(fixturePath("idt"), dir / "idt.msi");
  if (built.file.empty())
    return built;
  ProcessResult summary =
      runProcess({"msibuild", built.file.string(), "-s", "Idt Oracle Product", "Odlex Fixtures",
                  "Intel;1033", "{9C0B2A3D-1E4F-4A5B-8C6D-7E8F9A0B1C2D}"});
  if (!summary.ok())
    return failed("msibuild -s: " + summary.describe());
  return built;
}

// One table whose every row holds two strings of its own, so the string pool passes the
// 65,536 entries that 2-byte references can address.
BuiltPackage buildManyStrings(const fs::path& dir) {
  std::string text = "Name\tValue\tNumber\r\ns32\tS64\tI4\r\nManyStrings\tName\r\n";
  for (int i = 0; i < 72000; ++i) {
    text += "K" + std::to_string(1000000 + i) + "\tvalue-" + std::to_string(i * 7) + "\t" +
            std::to_string(i - 36000) + "\r\n";
  }
  writeFileBytes(dir / "ManyStrings.idt", text);
  return buildFromIdt(dir, dir / "many-strings.msi");
}

BuiltPackage buildVersion4(const fs::path& dir) {
  const BuiltPackage& source = testPackage(PackageKind::kIdt);
  if (source.file.empty())
    return source;
  fs::path out = dir / "version4.msi";
  std::string error;
  if (!copyContainer(source.file, out, 4, error))
    return failed("version 4 copy: " + error);
  return {out, {}};
}

BuiltPackage build(PackageKind kind, const fs::path& dir) {
  switch (kind) {
    case PackageKind::kWixl:
      return buildWixl(dir);
    case PackageKind::kIdt:
      return buildIdt(dir);
    case PackageKind::kSample:
      return buildFromIdt(sampleSourceDir(), dir / "sample.msi");
    case PackageKind::kManyStrings:
      return buildManyStrings(dir);
    case PackageKind::kVersion4:
      return buildVersion4(dir);
  }
  return failed("unknown package kind");
}

// Builds into a folder of the program's own that lives until the program ends.
BuiltPackage buildPrivate(PackageKind kind) {
  static std::vector<std::unique_ptr<TempDir>> dirs;
  dirs.push_back(std::make_unique<TempDir>());
  return build(kind, dirs.back()->path());
}

// The package in the folder that the test programs of one ctest run share: the first program
// that needs it builds it while the others wait on its lock file.
BuiltPackage buildShared(PackageKind kind, const fs::path& cache) {
  const std::string name = packageKindName(kind);
  std::error_code error;
  fs::create_directories(cache, error);
  const int lock = ::open((cache / (name + ".lock")).c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0644);
  if (lock < 0 || ::flock(lock, LOCK_EX) != 0)
    return failed("cannot lock " + (cache / name).string());
  const fs::path shared = cache / (name + ".msi");
  BuiltPackage package{shared, {}};
  if (!fs::exists(shared)) {
    TempDir dir;
    package = build(kind, dir.path());
    if (!package.file.empty())
      package = fs::copy_file(package.file, shared, error) ? BuiltPackage{shared, {}}
                                                           : failed("cannot copy to " + name);
  }
  ::close(lock);
  return package;
}

}  // namespace

void writeWixlPayload(const fs::path& dir) {
  writeFileBytes(dir / "app.exe", "MZ app");
  writeFileBytes(dir / "readme.txt", "readme\r\n");
  writeFileBytes(dir / "strings_de.txt", "Grüße\r\n");
  writeFileBytes(dir / "config.ini", "[a]\n");
  std::string data(5000, '\0');
  for (std::size_t i = 0; i < data.size(); ++i)
    data[i] = static_cast<char>(i * 131 % 251);
  writeFileBytes(dir / "data.db", data);
  writeFileBytes(dir / "helper.bin", std::string("\0\1helper\xff", 10));
}

std::vector<PackageKind> allPackageKinds() {
  return {PackageKind::kWixl, PackageKind::kIdt, PackageKind::kSample, PackageKind::kManyStrings,
          PackageKind::kVersion4};
}

std::string packageKindName(PackageKind kind) {
  switch (kind) {
    case PackageKind::kWixl:
      return "Wixl";
    case PackageKind::kIdt:
      return "Idt";
    case PackageKind::kSample:
      return "Sample";
    case PackageKind::kManyStrings:
      return "ManyStrings";
    case PackageKind::kVersion4:
      return "Version4";
  }
  return "Unknown";
}

void PrintTo(PackageKind kind, std::ostream* out) {
  *out << packageKindName(kind);
}

const BuiltPackage& testPackage(PackageKind kind) {
  static std::map<PackageKind, BuiltPackage> built;
  auto found = built.find(kind);
  if (found != built.end())
    return found->second;
  const char* cache = std::getenv("ODLEX_PACKAGE_CACHE");
  return built[kind] =
             cache != nullptr && *cache != '\0' ? buildShared(kind, cache) : buildPrivate(kind);
}

fs::path fixturePath(const fs::path& relative) {
  return fs::path(ODLEX_SOURCE_DIR) / "tests" / "oracle" / "fixtures" / relative;
}

fs::path sampleSourceDir() {
  return fs::path(ODLEX_SOURCE_DIR) / "examples" / "sample";
}

std::vector<fs::path> idtFilesIn(const fs::path& dir) {
  std::vector<fs::path> files;
  for (const auto& entry : fs::directory_iterator(dir)) {
    if (entry.is_regular_file() && entry.path().extension() == ".idt")
      files.push_back(entry.path());
  }
  auto rank = [](const fs::path& file) {
    std::string stem = file.stem().string();
    return stem == "_ForceCodepage" ? 0 : stem == "_SummaryInformation" ? 2 : 1;
  };
  std::sort(files.begin(), files.end(), [&](const fs::path& a, const fs::path& b) {
    return std::pair(rank(a), a.filename()) < std::pair(rank(b), b.filename());
  });
  return files;
}

std::vector<std::string> msiinfoPersistentTables(const fs::path& package) {
  std::vector<std::string> tables = splitLines(msiinfoTables(package).out);
  std::erase_if(tables, [](const std::string& name) {
    return name == "_SummaryInformation" || name == "_ForceCodepage";
  });
  return tables;
}

::testing::AssertionResult msibuildImport(const fs::path& package,
                                          const std::vector<fs::path>& idts) {
  if (idts.empty())
    return ::testing::AssertionFailure() << "no .idt files to import";
  // libmsi looks for binary data files relative to its working directory, so it runs in the
  // folder of the .idt files (all in one folder) and is given their names.
  std::vector<std::string> argv{"msibuild", fs::absolute(package).string(), "-i"};
  for (const fs::path& idt : idts)
    argv.push_back(idt.filename().string());
  ProcessResult run = runProcess(argv, idts.front().parent_path());
  if (!run.ok())
    return ::testing::AssertionFailure() << "msibuild -i: " << run.describe();
  return ::testing::AssertionSuccess();
}

}  // namespace odlex::test
