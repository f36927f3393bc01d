// The info commands on a wixl-built package: info set writes each field to its property (read
// back with rows) and info reads it back; refused values write nothing. Checks of the values
// themselves are the library's and are tested there.

#include <gtest/gtest.h>

#include <map>
#include <set>

#include "common/Oracle.h"
#include "common/PackageTest.h"

namespace odlex::test {
namespace {

// NAME -> VALUE of `odlex info`.
std::map<std::string, std::string> info(const std::filesystem::path& package) {
  std::map<std::string, std::string> fields;
  for (const std::string& line : splitLines(odlexOutput({"info", package.string()}))) {
    const auto tab = line.find('\t');
    fields[line.substr(0, tab)] = tab == std::string::npos ? "" : line.substr(tab + 1);
  }
  return fields;
}

using OdlexInfo = PackageCopyTest;

TEST_F(OdlexInfo, SetFieldsReadBackAndRefusedOnesWriteNothing) {
  copyPackage(PackageKind::kWixl);
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
  EXPECT_EQ(fields.size(), 30u);
  EXPECT_EQ(fields.at("Kind"), "package");
  const std::vector<std::string> rows = splitLines(odlexOutput({"rows", out.string(), "Property"}));
  const std::set<std::string> properties(rows.begin(), rows.end());
  for (const std::string& assignment : assignments) {
    const auto equals = assignment.find('=');
    const std::string name = assignment.substr(0, equals);
    EXPECT_EQ(fields.at(name), assignment.substr(equals + 1));
    if (name != "PackageCode" && equals + 1 < assignment.size()) {
      EXPECT_TRUE(properties.contains(name + "\t" + assignment.substr(equals + 1))) << assignment;
    }
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
