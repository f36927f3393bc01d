// Values of the lower layer that need no package: nullable numbers, binary data, GUIDs, which
// characters a database's code page can hold, and formatted text.

#include <gtest/gtest.h>

#include <odlex/msi/Guid.h>
#include <odlex/msi/MSIBinary.h>
#include <odlex/msi/MSIDatabase.h>
#include <odlex/msi/MSIRecord.h>
#include <odlex/msi/MSIStringChecker.h>
#include <odlex/msi/MSITranslate.h>
#include <odlex/msi/Nullable.h>

#include <set>
#include <string>
#include <vector>

#include "common/Oracle.h"
#include "common/TempDir.h"
#include "msi/engine/Database.h"

namespace odlex::test {
namespace {

TEST(Nullable, NullValueComparisonAndConversion) {
  NullableSignedShort null;
  EXPECT_TRUE(null.IsNull());
  EXPECT_EQ(null.Get(), -32768);
  EXPECT_EQ(NullableLong().Get(), static_cast<std::int32_t>(0x80000000));
  EXPECT_EQ(NullableShort().Get(), 0);

  NullableSignedShort sequence = -4;
  EXPECT_TRUE(sequence == -4);
  EXPECT_FALSE(null == 0);
  EXPECT_TRUE(null < sequence);
  EXPECT_TRUE(null == NullableSignedShort());
  EXPECT_TRUE(sequence < 0);
  EXPECT_TRUE(NullableSignedShort(7) > sequence);
}

TEST(MSIBinary, FromMemoryAndFromFiles) {
  const unsigned char bytes[] = {0, 1, 2, 255};
  const MSIBinary memory(bytes, sizeof bytes);
  EXPECT_TRUE(memory.GetBinaryFile().isNull());
  EXPECT_EQ(MSIBinary(nullptr, 10).GetSize(), 0u);

  TempDir dir;
  writeFileBytes(dir / "data.bin", std::string("\0\1\2\xFF", 4));
  const TalString path = TalString::FromUtf8((dir / "data.bin").string());
  const MSIBinary file(path);
  EXPECT_TRUE(file.GetReadError().isNull());
  EXPECT_EQ(file.GetBinaryFile(), path);
  EXPECT_EQ(file, memory);

  const MSIBinary missing(TalString::FromUtf8((dir / "missing.bin").string()));
  EXPECT_EQ(missing.GetSize(), 0u);
  EXPECT_TRUE(missing.GetReadError().contains(u"missing.bin"));
}

TEST(MSIRecord, FieldsAreOneBasedAndBounded) {
  MSIRecord record;
  EXPECT_EQ(record.SetString(3, u"text"), 0u);
  EXPECT_EQ(record.GetFieldCount(), 3u);
  EXPECT_TRUE(record.IsNull(1));
  EXPECT_EQ(record.SetString(1, u""), 0u);  // the empty string is null
  EXPECT_TRUE(record.IsNull(1));
  EXPECT_EQ(record.SetInteger(2, -7), 0u);
  EXPECT_EQ(TalString(record[2]), TalString(u"-7"));
  EXPECT_EQ(record.GetInteger(3), MSIRecord::NullInteger);
  EXPECT_EQ(record.SetInteger(0, 1), 87u);
  EXPECT_EQ(record.SetInteger(MSIRecord::MaxFields + 1, 1), 87u);
  EXPECT_EQ(record.GetFieldCount(), 3u);
  MSIBinary data;
  EXPECT_EQ(record.GetStream(3, data), 1629u);
  record.Clear();
  EXPECT_EQ(record.GetFieldCount(), 0u);
}

TEST(Guid, BracedUpperCaseVersion4AndUnique) {
  std::set<std::u16string> seen;
  for (int i = 0; i < 1000; ++i) {
    const TalString guid = GenerateGuid();
    ASSERT_EQ(guid.length(), 38u);
    for (std::size_t p = 0; p < 38; ++p) {
      const char16_t c = guid[p];
      if (p == 0)
        EXPECT_EQ(c, u'{');
      else if (p == 37)
        EXPECT_EQ(c, u'}');
      else if (p == 9 || p == 14 || p == 19 || p == 24)
        EXPECT_EQ(c, u'-');
      else
        EXPECT_TRUE((c >= u'0' && c <= u'9') || (c >= u'A' && c <= u'F')) << guid.ToUtf8();
    }
    EXPECT_EQ(guid[15], u'4');
    EXPECT_NE(std::u16string_view(u"89AB").find(guid[20]), std::u16string_view::npos);
    seen.insert(guid.u16());
  }
  EXPECT_EQ(seen.size(), 1000u);
}

TEST(MSIStringChecker, FollowsTheDatabaseCodePage) {
  TempDir dir;
  MSIDatabase db(TalString::FromUtf8((dir / "new.msi").string()), MSIDatabase::ePersistCreate);
  ASSERT_TRUE(db.isValid());
  MSIStringChecker checker(db);
  const TalString western(u"Café €");
  const TalString japanese(u"日本語");

  // Neutral: what code page 1252 holds.
  EXPECT_TRUE(checker.IsStringOK(western));
  EXPECT_FALSE(checker.IsStringOK(japanese));
  EXPECT_TRUE(checker.IsCharOK(u'é'));

  db.engineDatabase()->setCodePage(1252);
  EXPECT_TRUE(checker.IsStringOK(western));
  EXPECT_FALSE(checker.IsCharOK(u'日'));

  db.engineDatabase()->setCodePage(932);
  EXPECT_TRUE(checker.IsStringOK(japanese));
  EXPECT_TRUE(checker.IsStringOK(u"ASCII only"));
  EXPECT_FALSE(checker.IsCharOK(u'é'));

  // A closed database is treated as neutral.
  db.close(false);
  EXPECT_TRUE(checker.IsCharOK(u'é'));
  EXPECT_FALSE(checker.IsStringOK(japanese));
}

// Formatted text to plain text and back through a table of variables.
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
