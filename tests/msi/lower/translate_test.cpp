// Formatted text to plain text and back through a table of variables.

#include <gtest/gtest.h>

#include <odlex/msi/MSITranslate.h>

namespace odlex::test {
namespace {

MSITranslate folders() {
  MSITranslate translate;
  translate.SetVariable(u"ProgramFilesFolder", u"C:\\Program Files\\");
  translate.SetVariable(u"INSTALLDIR", u"[ProgramFilesFolder]Vendor\\");
  translate.SetVariable(u"Empty", u"");
  return translate;
}

TEST(Translate, ReferencesExpandThroughOtherVariablesAndUnknownOnesStay) {
  const MSITranslate translate = folders();
  EXPECT_EQ(translate.Translate(u"[INSTALLDIR]bin\\[Unknown]"),
            u"C:\\Program Files\\Vendor\\bin\\[Unknown]");
  EXPECT_EQ(translate.Translate(u"[\\[]INSTALLDIR[\\]][INSTALLDIR]"),
            u"[INSTALLDIR]C:\\Program Files\\Vendor\\")
      << "escapes give the bracket itself, which is not read again";
  EXPECT_EQ(translate.Translate(u"a[Empty]b[unclosed"), u"ab[unclosed");
  EXPECT_EQ(translate.Translate(u"[installdir]"), u"[installdir]") << "names are case-sensitive";
}

TEST(Translate, ACycleOfReferencesEnds) {
  MSITranslate translate;
  translate.SetVariable(u"A", u"x[B]");
  translate.SetVariable(u"B", u"[A]");
  const std::u16string result = translate.Translate(u"[A]").u16();
  EXPECT_EQ(result.substr(0, MSITranslate::kMaxPasses / 2), std::u16string(8, u'x'));
}

TEST(Translate, UnFormatPrefersTheLongestValue) {
  MSITranslate translate = folders();
  translate.SetVariable(u"INSTALLDIR", u"C:\\Program Files\\Vendor\\");
  EXPECT_EQ(translate.UnFormat(u"C:\\Program Files\\Vendor\\bin\\"), u"[INSTALLDIR]bin\\");
  EXPECT_EQ(translate.UnFormat(u"C:\\Program Files\\Other\\"), u"[ProgramFilesFolder]Other\\");
  EXPECT_EQ(translate.UnFormat(u"D:\\data"), u"D:\\data");

  // A value inside a reference already put in is not replaced again.
  translate.SetVariable(u"Short", u"INSTALL");
  EXPECT_EQ(translate.UnFormat(u"C:\\Program Files\\Vendor\\"), u"[INSTALLDIR]");
}

}  // namespace
}  // namespace odlex::test
