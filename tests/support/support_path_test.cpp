#include <gtest/gtest.h>

#include "odlex/support/Path.h"

namespace {

using namespace odlex::path;

TEST(Path, SplitsAtTheLastSeparatorOfEitherKind) {
  struct Case {
    const char16_t* path;
    const char16_t* directory;
    const char16_t* name;
    const char16_t* extension;
  };
  const Case cases[] = {
      {u"C:\\Setup\\Product.msi", u"C:\\Setup", u"Product.msi", u"msi"},
      {u"/home/user/merge.MSM", u"/home/user", u"merge.MSM", u"MSM"},
      {u"mixed/dir\\sub/file.tar.gz", u"mixed/dir\\sub", u"file.tar.gz", u"gz"},
      {u"dir.d\\noext", u"dir.d", u"noext", u""},
      {u"plain.idt", u"", u"plain.idt", u"idt"},
      {u"trailing\\", u"trailing", u"", u""},
      {u"\\\\server\\share", u"\\\\server", u"share", u""},
      {u"", u"", u"", u""},
  };
  for (const Case& c : cases) {
    const TalString p(c.path);
    EXPECT_EQ(Directory(p), c.directory) << p.ToUtf8();
    EXPECT_EQ(FileName(p), c.name) << p.ToUtf8();
    EXPECT_EQ(Extension(p), c.extension) << p.ToUtf8();
  }
  EXPECT_EQ(LastSeparator(u"a/b\\c"), 3u);
  EXPECT_EQ(LastSeparator(u"abc"), RW_NPOS);
}

TEST(Path, JoinKeepsTheDirectorysStyle) {
  EXPECT_EQ(Join(u"C:\\Setup", u"a.msi"), u"C:\\Setup\\a.msi");
  EXPECT_EQ(Join(u"/tmp", u"a.msi"), u"/tmp/a.msi");
  EXPECT_EQ(Join(u"dir", u"a.msi"), u"dir/a.msi");
  EXPECT_EQ(Join(u"C:\\Setup\\", u"a.msi"), u"C:\\Setup\\a.msi");
  EXPECT_EQ(Join(u"/tmp/", u"a"), u"/tmp/a");
  EXPECT_EQ(Join(u"", u"a"), u"a");
  EXPECT_EQ(Join(u"dir", u""), u"dir");
}

TEST(Path, FilesystemConversionUsesUtf8) {
  const TalString name(u"/tmp/\u00e9t\u00e9\U0001F600.msi");
  const std::filesystem::path native = ToFilesystem(name);
  EXPECT_EQ(native.native(), "/tmp/\xC3\xA9t\xC3\xA9\xF0\x9F\x98\x80.msi");
  EXPECT_EQ(FromFilesystem(native), name);
  EXPECT_EQ(FromFilesystem(std::filesystem::path("bad\xFF")), u"bad\uFFFD");
}

}  // namespace
