#pragma once
// Installer packages for the oracle tests, each written by a tool other than ours:
//   kWixl        - wixl from tests/oracle/fixtures/wixl/product.wxs (a small realistic product)
//   kIdt         - msibuild from tests/oracle/fixtures/idt/*.idt (column types, nulls, code
//                  page 1252, binary streams in and above the mini stream)
//   kSample      - msibuild from examples/sample/*.idt (the bundled sample package)
//   kManyStrings - msibuild from a generated table with more than 70,000 distinct strings,
//                  which makes libmsi store 3-byte string references
//   kVersion4    - the kIdt package moved into a version-4 container (4096-byte sectors)
// Each is built on first use, once per test program, or, under ctest (which names a shared
// folder in ODLEX_PACKAGE_CACHE), once per ctest run.

#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace odlex::test {

enum class PackageKind { kWixl, kIdt, kSample, kManyStrings, kVersion4 };

std::vector<PackageKind> allPackageKinds();
// A name usable in test names: "Wixl", "Idt", ...
std::string packageKindName(PackageKind kind);
// Lets GoogleTest print the kind by name in failure messages.
void PrintTo(PackageKind kind, std::ostream* out);

struct BuiltPackage {
  std::filesystem::path file;  // empty when the package could not be built
  std::string error;           // why not
};

// Writes the files the wixl fixture refers to into `dir` (their contents only need to be
// distinct), for tests that run wixl on a variant of the fixture.
void writeWixlPayload(const std::filesystem::path& dir);

// The package of that kind, building it on first use.
const BuiltPackage& testPackage(PackageKind kind);

// A file or folder under tests/oracle/fixtures.
std::filesystem::path fixturePath(const std::filesystem::path& relative);
// The folder of the bundled sample package's idt sources.
std::filesystem::path sampleSourceDir();

// The .idt files of a folder, _ForceCodepage.idt first (it must be imported before any text)
// and _SummaryInformation.idt last, the others by name.
std::vector<std::filesystem::path> idtFilesIn(const std::filesystem::path& dir);

// Names of the persistent tables of `package` as msiinfo lists them, without the two
// pseudo tables _SummaryInformation and _ForceCodepage.
std::vector<std::string> msiinfoPersistentTables(const std::filesystem::path& package);

// Runs msibuild to import `idts` (all in one folder) into `package` (created when missing).
::testing::AssertionResult msibuildImport(const std::filesystem::path& package,
                                          const std::vector<std::filesystem::path>& idts);

}  // namespace odlex::test
