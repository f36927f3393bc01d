// The info commands on a wixl-built package: what info shows against msitools' reading of the
// Property table, and info set read back by info. Checks of the values themselves are the library's
// and are tested there.

#include <gtest/gtest.h>

#include <map>
#include <set>

#include "common/Oracle.h"
#include "common/Packages.h"
#include "common/TempDir.h"

namespace odlex::test {
namespace {

// The fields of the product information that are no property.
const std::set<std::string> kNotProperties = {"PackageCode",        "PackageCodePolicy",
                                              "PackageCodeChanged", "Kind",
                                              "SchemaVersion",      "Compressed"};

class OdlexInfo : public ::testing::Test {
 protected:
  void SetUp() override {
    const BuiltPackage& built = testPackage(PackageKind::kWixl);
    ASSERT_FALSE(built.file.empty()) << built.error;
    std::filesystem::copy_file(built.file, package_);
  }

  // NAME -> VALUE of `odlex info`.
  std::map<std::string, std::string> info(const std::filesystem::path& package) {
    const ProcessResult result = runOdlex({"info", package.string()});
    EXPECT_TRUE(result.ok()) << result.describe();
    std::map<std::string, std::string> fields;
    for (const std::string& line : splitLines(result.out)) {
      const auto tab = line.find('\t');
      fields[line.substr(0, tab)] = tab == std::string::npos ? "" : line.substr(tab + 1);
    }
    return fields;
  }

  std::string packageCode(const std::filesystem::path& package) {
    for (const std::string& line : splitLines(msiinfoSuminfo(package).out)) {
      if (line.starts_with("Revision number (UUID): "))
        return line.substr(line.find(": ") + 2);
    }
    return {};
  }

  TempDir dir_;
  std::filesystem::path package_ = dir_ / "product.msi";
};

TEST_F(OdlexInfo, FieldsAreThePropertiesMsitoolsReads) {
  std::map<std::string, std::string> properties;
  for (const std::string& row : msiinfoRows(package_, "Property"))
    properties[row.substr(0, row.find('\t'))] = row.substr(row.find('\t') + 1);
  const std::map<std::string, std::string> fields = info(package_);
  ASSERT_EQ(fields.size(), 30u);
  for (const auto& [name, value] : fields) {
    if (!kNotProperties.contains(name)) {
      EXPECT_EQ(value, properties[name]) << name;
    }
  }
  EXPECT_EQ(fields.at("PackageCode"), packageCode(package_));
  EXPECT_EQ(fields.at("Kind"), "package");
}

TEST_F(OdlexInfo, SetFieldsReadBackAndRefusedOnesWriteNothing) {
  const std::vector<std::string> assignments = {
      "ProductName=Renamed",
      "ARPCONTACT=Contact",
      "PRODUCTVERSION=3.1",
      "ProductCode={11111111-2222-3333-4444-555555555555}",
      "PackageCode={66666666-7777-8888-9999-AAAAAAAAAAAA}",
      "ProductID=PID",
      "ARPSIZE=42",
      "ARPPRODUCTICON=Icon",
      "Manufacturer=Maker",
      "ARPURLINFOABOUT=about",
      "ARPHELPLINK=",
      "ARPHELPTELEPHONE=555",
      "ARPREADME=readme",
      "ARPURLUPDATEINFO=update",
      "ARPCOMMENTS=comments",
      "ALLUSERS=2",
      "ARPSYSTEMCOMPONENT=1",
      "ARPNOREMOVE=1",
      "ARPNOMODIFY=1",
      "ARPNOREPAIR=1",
      "NOUSERNAME=1",
      "NOCOMPANYNAME=1",
      "USERNAME=user",
      "COMPANYNAME=company",
      "UpgradeCode={ABCDEFAB-CDEF-ABCD-EFAB-CDEFABCDEFAB}"};
  const std::filesystem::path out = dir_ / "out.msi";
  std::vector<std::string> args = {"info", "set", package_.string(), "-o", out.string()};
  args.insert(args.end(), assignments.begin(), assignments.end());
  const ProcessResult set = runOdlex(args);
  ASSERT_TRUE(set.ok()) << set.describe();
  const std::map<std::string, std::string> fields = info(out);
  for (const std::string& assignment : assignments) {
    const auto equals = assignment.find('=');
    EXPECT_EQ(fields.at(assignment.substr(0, equals)), assignment.substr(equals + 1));
  }

  const std::string before = readFileBytes(package_);
  for (const std::vector<std::string>& refused :
       {std::vector<std::string>{"ProductName=\xE4\xB8\xAD", "ARPCOMMENTS=\xE4\xB8\xAD"},
        std::vector<std::string>{"ALLUSERS=3"}, std::vector<std::string>{"Nothing=1"}}) {
    std::vector<std::string> edit = {"info", "set", package_.string()};
    edit.insert(edit.end(), refused.begin(), refused.end());
    const ProcessResult result = runOdlex(edit);
    EXPECT_EQ(result.exitCode, 1) << result.describe();
    for (const std::string& assignment : refused)
      EXPECT_NE(result.err.find(assignment.substr(0, assignment.find('='))), std::string::npos)
          << result.err;
  }
  EXPECT_EQ(readFileBytes(package_), before);
}

}  // namespace
}  // namespace odlex::test
