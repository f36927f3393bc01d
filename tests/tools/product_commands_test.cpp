// The gui, search and replace commands on a package with dialogs built by msibuild from .idt
// text: the query dialog gui import keeps, and the lines search and replace print. The rules are
// the library's and are tested there; gui remove is walked with the other edits (command walk).

#include <gtest/gtest.h>

#include "common/Oracle.h"
#include "common/Packages.h"
#include "common/TempDir.h"

namespace odlex::test {
namespace {

// The .idt text of a package whose dialogs are `dialogs` (name, title), each with an OK button
// that ends the dialog.
std::map<std::string, std::string> userInterface(
    const std::vector<std::pair<std::string, std::string>>& dialogs) {
  std::string dialog =
      "Dialog\tHCentering\tVCentering\tWidth\tHeight\tAttributes\tTitle\tControl_First\t"
      "Control_Default\tControl_Cancel\r\ns72\ti2\ti2\ti2\ti2\tI4\tL128\ts50\tS50\tS50\r\n"
      "Dialog\tDialog\r\n";
  std::string control =
      "Dialog_\tControl\tType\tX\tY\tWidth\tHeight\tAttributes\tProperty\tText\tControl_Next\t"
      "Help\r\ns72\ts50\ts20\ti2\ti2\ti2\ti2\tI4\tS72\tL0\tS50\tL50\r\nControl\tDialog_"
      "\tControl\r\n";
  std::string event =
      "Dialog_\tControl_\tEvent\tArgument\tCondition\tOrdering\r\n"
      "s72\ts50\ts50\ts255\tS255\tI2\r\nControlEvent\tDialog_\tControl_\tEvent\tArgument\t"
      "Condition\r\n";
  for (const auto& [name, title] : dialogs) {
    dialog += name + "\t50\t50\t370\t270\t3\t" + title + "\tOK\tOK\tOK\r\n";
    control += name + "\tOK\tPushButton\t300\t243\t56\t17\t3\t\tOK\t\t\r\n";
    event += name + "\tOK\tEndDialog\tReturn\t1\t1\r\n";
  }
  return {
      {"Dialog.idt", dialog},
      {"Control.idt", control},
      {"ControlEvent.idt", event},
      {"Property.idt",
       "Property\tValue\r\ns72\tl0\r\nProperty\tProperty\r\nProductName\tExample Product\r\n"
       "ProductCode\t{6D3F1E2A-4B5C-4D7E-8F90-A1B2C3D4E5F6}\r\n"},
  };
}

class OdlexProductCommands : public ::testing::Test {
 protected:
  std::filesystem::path build(const std::string& name,
                              const std::vector<std::pair<std::string, std::string>>& dialogs) {
    const std::filesystem::path idts = dir_ / (name + "-idt");
    std::vector<std::filesystem::path> files;
    for (const auto& [file, text] : userInterface(dialogs)) {
      writeFileBytes(idts / file, text);
      files.push_back(idts / file);
    }
    EXPECT_TRUE(msibuildImport(dir_ / name, files));
    return dir_ / name;
  }

  std::filesystem::path package() {
    return build("ui.msi", {{"Welcome", "Hello"}, {"ZrQueryX", "Own query"}});
  }

  TempDir dir_;
};

// Which tables gui remove drops and which dialogs gui import takes are the library's rules
// (product_tables_test); the query dialog the package has is kept, read back with query.
TEST_F(OdlexProductCommands, GuiImportKeepsThePackagesQueryDialog) {
  const std::filesystem::path target = package();
  const std::filesystem::path source =
      build("branded.msi", {{"Branded", "Brand"}, {"ZrQueryX", "Their query"}});
  odlexOutput({"gui", "import", target.string(), source.string()});
  EXPECT_EQ(
      odlexOutput({"query", target.string(), "SELECT Dialog, Title FROM Dialog ORDER BY Dialog"}),
      "Branded\tBrand\nZrQueryX\tOwn query\n");
  for (const char* table : {"Control", "ControlEvent"}) {
    EXPECT_EQ(odlexOutput({"query", target.string(),
                           std::string("SELECT Dialog_ FROM ") + table + " ORDER BY Dialog_"}),
              "Branded\nZrQueryX\n")
        << table;
  }
}

// search and replace print a line per hit and per table.
TEST_F(OdlexProductCommands, SearchAndReplacePrintALinePerHitAndPerTable) {
  const std::string path = package().string();
  EXPECT_NE(odlexOutput({"search", path, "--regex", "Example"})
                .find("Property\tProductName\tValue\tExample Product"),
            std::string::npos);
  EXPECT_NE(odlexOutput({"replace", path, "Example", "Sample", "--dry-run"}).find("Property\t1"),
            std::string::npos);
}

}  // namespace
}  // namespace odlex::test
