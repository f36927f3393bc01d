// Transforms checked against Wine's installer engine, a second engine that applies them (run as
// a program, for the tests only; see tests/oracle/wine). A transform odlex writes between two
// wixl-built packages, applied to the base by Wine and by odlex, gives the target's tables and
// streams exactly, as msiinfo (an independent reader) exports them; and with each error condition
// suppressed, a transform that meets it leaves both engines with the same tables. Wine cannot
// write transforms (MsiDatabaseGenerateTransform answers ERROR_CALL_NOT_IMPLEMENTED), so all of
// them are odlex's; libmsi cannot apply any (it does not find the table of any table stream).

#include <gtest/gtest.h>

#include <odlex/database/ODLEXDatabase.h>
#include <odlex/tables/ODLEXDatabaseError.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <memory>

#include "common/Oracle.h"
#include "common/Packages.h"
#include "common/PathText.h"
#include "common/TempDir.h"
#include "msi/engine/Database.h"
#include "msi/transform/Transform.h"
#include "storage/FileSystem.h"

namespace odlex::test {
namespace {

namespace fs = std::filesystem;

// Wine keeps its state in a prefix folder, made on first use (a few seconds) and served by a
// wineserver process. Each test program has its own and stops its server at the end, so that no
// process outlives the tests.
class WinePrefix : public ::testing::Environment {
 public:
  void use() {
    if (dir_)
      return;
    dir_ = std::make_unique<TempDir>();
    setenv("WINEPREFIX", dir_->path().c_str(), 1);
    setenv("WINEDEBUG", "-all", 1);
    // No .NET or browser engine to install into the new prefix.
    setenv("WINEDLLOVERRIDES", "mscoree,mshtml=", 1);
  }
  void TearDown() override {
    if (!dir_)
      return;
    runProcess({ODLEX_WINESERVER, "-k"});
    runProcess({ODLEX_WINESERVER, "-w"});
    dir_.reset();
  }

 private:
  std::unique_ptr<TempDir> dir_;
};

WinePrefix* const winePrefix =
    static_cast<WinePrefix*>(::testing::AddGlobalTestEnvironment(new WinePrefix));

// A path as Wine's programs see it: drive Z: is the root folder.
std::string winePath(const fs::path& path) {
  std::string text = "Z:" + fs::absolute(path).string();
  std::replace(text.begin(), text.end(), '/', '\\');
  return text;
}

// Applies `transform` to `package` in place with Wine's engine, suppressing `conditions`; the
// installer result code of the apply (the package is committed when it is 0), -1 when the
// program could not run.
int applyWithWine(const fs::path& package, const fs::path& transform, std::uint32_t conditions) {
  if (std::string(ODLEX_WINE_ORACLE).empty()) {
    ADD_FAILURE() << "the Wine oracle was not built: install wine64 and "
                     "gcc-mingw-w64-x86-64-win32 (scripts/setup.sh) and configure again";
    return -1;
  }
  winePrefix->use();
  ProcessResult run = runProcess({ODLEX_WINE, ODLEX_WINE_ORACLE, winePath(package),
                                  winePath(transform), std::to_string(conditions)});
  const std::vector<std::string> lines = splitLines(run.out);
  if (!run.ok() || lines.size() < 2 || lines[0] != "open 0" || !lines[1].starts_with("apply ")) {
    ADD_FAILURE() << "Wine: " << run.describe() << "\n" << run.out;
    return -1;
  }
  const int result = std::stoi(lines[1].substr(6));
  if (result == 0) {
    EXPECT_TRUE(lines.size() == 3 && lines[2] == "commit 0") << run.out;
  }
  return result;
}

// Applies `transform` to `package` in place through the database object, suppressing
// `conditions`, and saves it when it applied; false when it did not.
bool applyWithOdlex(const fs::path& package, const fs::path& transform, std::uint32_t conditions) {
  ODLEXDatabase::INIT();
  ODLEXDatabase& db = ODLEXDatabase::AddDatabaseToList(text(package));
  bool applied = true;
  try {
    db.ApplyTransform(text(transform), static_cast<int>(conditions));
    EXPECT_TRUE(db.SaveChanges());
  } catch (const ODLEXDatabaseError&) {
    applied = false;
  }
  ODLEXDatabase::KillDatabaseList();
  return applied;
}

// Writes the transform from `base` to `target` with odlex.
void generateWithOdlex(const fs::path& base, const fs::path& target, const fs::path& out) {
  storage::FileSystem& files = storage::FileSystem::real();
  engine::Error error;
  auto from = engine::Database::open(files, base, engine::Database::OpenMode::kReadOnly, error);
  auto to = engine::Database::open(files, target, engine::Database::OpenMode::kReadOnly, error);
  ASSERT_TRUE(from && to) << error.text;
  storage::CompoundNode tree;
  bool differs = false;
  ASSERT_TRUE(transform::generateTransform(*from, *to, {}, tree, differs, error)) << error.text;
  ASSERT_TRUE(differs);
  ASSERT_TRUE(transform::writeTransformFile(files, out, tree, error)) << error.text;
}

// The same persistent tables with the same rows, in any order.
::testing::AssertionResult sameTablesAs(const fs::path& expected, const fs::path& actual) {
  std::vector<std::string> tables = msiinfoPersistentTables(expected);
  std::vector<std::string> found = msiinfoPersistentTables(actual);
  std::sort(tables.begin(), tables.end());
  std::sort(found.begin(), found.end());
  if (auto same = linesEqual(tables, found, "tables"); !same)
    return same;
  for (const std::string& table : tables) {
    std::vector<std::string> want = msiinfoRows(expected, table);
    std::vector<std::string> got = msiinfoRows(actual, table);
    std::sort(want.begin(), want.end());
    std::sort(got.begin(), got.end());
    if (auto same = linesEqual(want, got, "table " + table); !same)
      return same;
  }
  return ::testing::AssertionSuccess();
}

const fs::path& wixlBase() {
  const BuiltPackage& built = testPackage(PackageKind::kWixl);
  EXPECT_FALSE(built.file.empty()) << built.error;
  return built.file;
}

fs::path copyOf(const fs::path& package, const fs::path& copy) {
  fs::copy_file(package, copy, fs::copy_options::overwrite_existing);
  return copy;
}

// The wixl fixture, and a copy with edits of every kind a transform carries: changed, added and
// removed rows in several tables and a table the base does not have (Upgrade); with `helper`, new
// data for a binary cell; with `readme`, new contents for a file, which change the embedded
// cabinet, a stream outside the tables. Both are built from the same files, so that nothing else
// differs.
struct Pair {
  fs::path base, target;
};

struct TargetCase {
  const char* name;
  const char* helper;  // new data of the binary cell, or null
  const char* readme;  // new contents of the file in the cabinet, or null
  // Whether Wine applies it too: it applies new rows and tables, but keeps the old data of a
  // changed binary cell and fails on streams outside the tables (see msi/transform/Transform.h).
  bool byWine;
};

Pair buildPair(const TempDir& dir, const TargetCase& test) {
  std::string wxs = readFileBytes(fixturePath("wixl/product.wxs"));
  writeWixlPayload(dir.path());
  const Pair pair{dir / "base.msi", dir / (std::string(test.name) + ".msi")};
  ProcessResult run = runProcess(
      {"wixl", "-o", pair.base.string(), fixturePath("wixl/product.wxs").string()}, dir.path());
  EXPECT_TRUE(run.ok()) << run.describe();

  const std::vector<std::pair<std::string, std::string>> edits = {
      {"Version=\"1.2.3\"", "Version=\"1.3.0\""},
      {"<Property Id=\"ARPHELPLINK\" Value=\"https://example.com/help\" />",
       "<Property Id=\"NEWPROPERTY\" Value=\"added\" />"},
      {"Value=\"Grüße aus Zürich\" />", "Value=\"Grüße aus Bern\" />"},
      {"Title=\"Daten\"", "Title=\"Data files\""},
      {"<Media Id=\"1\"",
       "<Upgrade Id=\"4A7F2C91-0B3E-4D6A-8C55-1E9F3A2B6D47\"><UpgradeVersion Minimum=\"1.0.0\" "
       "Maximum=\"1.3.0\" Property=\"OLDERFOUND\" /></Upgrade>\n    <Media Id=\"1\""},
  };
  for (const auto& [from, to] : edits) {
    const std::size_t at = wxs.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    if (at != std::string::npos)
      wxs.replace(at, from.size(), to);
  }
  writeFileBytes(dir / "target.wxs", wxs);
  if (test.helper)
    writeFileBytes(dir / "helper.bin", test.helper);
  if (test.readme)
    writeFileBytes(dir / "readme.txt", test.readme);
  run = runProcess({"wixl", "-o", pair.target.string(), "target.wxs"}, dir.path());
  EXPECT_TRUE(run.ok()) << run.describe();
  return pair;
}

const TargetCase kTargets[] = {
    {"rows-and-table", nullptr, nullptr, true},
    {"streams-too", "new helper data", "a longer readme, so that the cabinet changes\r\n", false},
};

TEST(TransformEngines, ApplyOdlexTransformToTheBaseGivingTheTarget) {
  for (const TargetCase& test : kTargets) {
    SCOPED_TRACE(test.name);
    TempDir dir;
    const auto [base, target] = buildPair(dir, test);
    const fs::path mst = dir / "base-to-target.mst";
    generateWithOdlex(base, target, mst);
    std::vector<fs::path> applied{copyOf(base, dir / "by-odlex.msi")};
    ASSERT_TRUE(applyWithOdlex(applied.back(), mst, 0));
    if (test.byWine) {
      applied.push_back(copyOf(base, dir / "by-wine.msi"));
      ASSERT_EQ(applyWithWine(applied.back(), mst, 0), 0);
    }
    for (const fs::path& package : applied) {
      SCOPED_TRACE(package.filename());
      EXPECT_TRUE(sameTablesAs(target, package));
      for (const char* stream : {"product.cab", "Binary.HelperBinary"})
        EXPECT_EQ(msiinfoExtract(target, stream).out, msiinfoExtract(package, stream).out)
            << stream;
    }
  }
}

// Variants of the wixl package made by msibuild, for transforms that meet each error
// condition when applied to another variant.
struct Variant {
  const char* name;
  std::vector<std::string> statements;  // run in order by msibuild -q
  const char* codePage = nullptr;       // imported as _ForceCodepage first, when set
};

const Variant kVariants[] = {
    {"base", {}},
    {"row", {"INSERT INTO Property (Property, Value) VALUES ('ODLEXPROP', 'one')"}},
    {"changed-row", {"INSERT INTO Property (Property, Value) VALUES ('ODLEXPROP', 'two')"}},
    {"table", {"CREATE TABLE Extra (Name CHAR(32) NOT NULL PRIMARY KEY Name)"}},
    {"cp1250", {}, "1250"},
    {"cp1250-row", {"INSERT INTO Property (Property, Value) VALUES ('ODLEXPROP', 'one')"}, "1250"},
    {"cp1252", {}, "1252"},
};

fs::path buildVariant(const TempDir& dir, const Variant& variant) {
  const fs::path package = copyOf(wixlBase(), dir / (std::string(variant.name) + ".msi"));
  if (variant.codePage) {
    writeFileBytes(dir / "_ForceCodepage.idt",
                   std::string("\r\n\r\n") + variant.codePage + "\t_ForceCodepage\r\n");
    EXPECT_TRUE(msibuildImport(package, {dir / "_ForceCodepage.idt"}));
  }
  std::vector<std::string> msibuild{"msibuild", package.string()};
  for (const std::string& statement : variant.statements) {
    msibuild.push_back("-q");
    msibuild.push_back(statement);
  }
  if (!variant.statements.empty()) {
    ProcessResult run = runProcess(msibuild);
    EXPECT_TRUE(run.ok()) << run.describe();
  }
  return package;
}

struct ConditionCase {
  const char* condition;
  std::uint32_t flag;
  const char* from;  // the transform is made from this variant to the next
  const char* to;
  const char* appliedTo;
  const char* suppressedGives;  // the variant whose tables applying it with `flag` gives
  // False where Wine's result differs and we judge Wine wrong (see msi/transform/Transform.h).
  bool wineAgrees;
};

const ConditionCase kConditionCases[] = {
    {"add existing row", transform::kAddExistingRow, "base", "row", "changed-row", "row", true},
    {"delete missing row", transform::kDeleteMissingRow, "row", "base", "base", "base", true},
    {"update missing row", transform::kUpdateMissingRow, "row", "changed-row", "base", "base",
     false},
    {"add existing table", transform::kAddExistingTable, "base", "table", "table", "table", true},
    {"delete missing table", transform::kDeleteMissingTable, "table", "base", "base", "base",
     false},
    {"code page mismatch", transform::kChangeCodePage, "cp1250", "cp1250-row", "cp1252",
     "cp1250-row", true},
};

// Each transform meets its condition: odlex refuses it, leaving the package as it was. With the
// condition suppressed it applies, giving the expected tables, in odlex and in Wine. (Wine also
// applies them all unsuppressed, whatever the flags say.)
TEST(TransformEngines, ApplyWithEachErrorConditionSuppressed) {
  TempDir dir;
  std::map<std::string, fs::path> variants;
  for (const Variant& variant : kVariants)
    variants[variant.name] = buildVariant(dir, variant);
  for (const ConditionCase& test : kConditionCases) {
    SCOPED_TRACE(test.condition);
    const fs::path mst = dir / (std::string(test.condition) + ".mst");
    generateWithOdlex(variants[test.from], variants[test.to], mst);
    const fs::path refused = copyOf(variants[test.appliedTo], dir / "refused.msi");
    EXPECT_FALSE(applyWithOdlex(refused, mst, 0));
    EXPECT_TRUE(sameTablesAs(variants[test.appliedTo], refused));

    const fs::path byOdlex = copyOf(variants[test.appliedTo], dir / "by-odlex.msi");
    EXPECT_TRUE(applyWithOdlex(byOdlex, mst, test.flag));
    EXPECT_TRUE(sameTablesAs(variants[test.suppressedGives], byOdlex));
    if (test.wineAgrees) {
      const fs::path byWine = copyOf(variants[test.appliedTo], dir / "by-wine.msi");
      EXPECT_EQ(applyWithWine(byWine, mst, test.flag), 0);
      EXPECT_TRUE(sameTablesAs(variants[test.suppressedGives], byWine));
    }
  }
}

}  // namespace
}  // namespace odlex::test
