// Formatted text to plain text and back through a table of variables.

#include <gtest/gtest.h>

#include <odlex/msi/MSITranslate.h>

#include <string>
#include <vector>

namespace odlex::test {
namespace {

MSITranslate folders() {
  MSITranslate translate;
  translate.SetVariable(u"ProgramFilesFolder", u"C:\\Program Files\\");
  translate.SetVariable(u"INSTALLDIR", u"[ProgramFilesFolder]Vendor\\");
  translate.SetVariable(u"Empty", u"");
  translate.SetVariable(u"PA", u"[PB]");
  translate.SetVariable(u"PB", u"x");
  translate.SetVariable(u"PC", u"a[\\[]b");
  translate.SetVariable(u"PD", u"PB");
  return translate;
}

TEST(Translate, FormatsAsTheInstallerFormats) {
  const MSITranslate translate = folders();
  const std::u16string deep = std::u16string(40, u'[') + u"PB" + std::u16string(40, u']');
  struct Case {
    std::u16string text;
    std::u16string formatted;
  };
  for (const Case& c : std::vector<Case>{
           {u"[PB]-[PB]", u"x-x"},
           // A value is inserted once and never formatted again, escapes in it included.
           {u"[PA]", u"[PB]"},
           {u"[INSTALLDIR]bin", u"[ProgramFilesFolder]Vendor\\bin"},
           {u"[PC]", u"a[\\[]b"},
           // Nested references are resolved from the inside out.
           {u"[[PD]]", u"x"},
           {u"[[Unknown]]", u"[[Unknown]]"},
           // Escapes in the text give the character, which is not read again.
           {u"[\\[]PB[\\]][PB]", u"[PB]x"},
           {u"[\\x]", u"x"},
           // Unknown names, other forms and broken brackets stay as written.
           {u"[Unknown] [pb] []", u"[Unknown] [pb] []"},
           {u"[#File] [!File] [$Component] [%PATH] [~]",
            u"[#File] [!File] [$Component] [%PATH] [~]"},
           {u"a[Empty]b]c[unclosed [PB]", u"ab]c[unclosed [PB]"},
           {deep, deep},
       }) {
    SCOPED_TRACE(TalString(c.text).ToUtf8());
    EXPECT_EQ(translate.Translate(TalString(c.text)).u16(), c.formatted);
  }
}

TEST(Translate, UnFormatPrefersTheLongestValue) {
  MSITranslate translate = folders();
  translate.SetVariable(u"INSTALLDIR", u"C:\\Program Files\\Vendor\\");
  TalString value;
  EXPECT_TRUE(translate.GetVariable(u"INSTALLDIR", value));
  EXPECT_EQ(value, u"C:\\Program Files\\Vendor\\");
  EXPECT_FALSE(translate.GetVariable(u"Unknown", value));
  EXPECT_EQ(value, u"C:\\Program Files\\Vendor\\") << "an unknown name leaves the value alone";
  EXPECT_EQ(translate.UnFormat(u"C:\\Program Files\\Vendor\\bin\\"), u"[INSTALLDIR]bin\\");
  EXPECT_EQ(translate.UnFormat(u"C:\\Program Files\\Other\\"), u"[ProgramFilesFolder]Other\\");
  EXPECT_EQ(translate.UnFormat(u"D:\\data"), u"D:\\data");

  // A value inside a reference already put in is not replaced again.
  translate.SetVariable(u"Short", u"INSTALL");
  EXPECT_EQ(translate.UnFormat(u"C:\\Program Files\\Vendor\\"), u"[INSTALLDIR]");
}

}  // namespace
}  // namespace odlex::test
