#include "storage/CodePage.h"

#include <algorithm>

#include "storage/CodePageIconv.h"
#include "storage/CodePageSingleByte.h"
#include "storage/CodePageUtf8.h"

namespace odlex::storage {
namespace {

constexpr std::uint32_t kNeutral = 0;
constexpr std::uint32_t kUtf8 = 65001;

enum class PageKind { kUnsupported, kSingleByte, kMultiByte, kUtf8 };

struct Page {
  std::uint32_t codePage;
  PageKind kind;
  const char* converterName;  // the C library's name for the page's Windows table
};

constexpr Page kPages[] = {
    {874, PageKind::kSingleByte, "CP874"},   {932, PageKind::kMultiByte, "CP932"},
    {936, PageKind::kMultiByte, "CP936"},    {949, PageKind::kMultiByte, "CP949"},
    {950, PageKind::kMultiByte, "CP950"},    {1250, PageKind::kSingleByte, "CP1250"},
    {1251, PageKind::kSingleByte, "CP1251"}, {1252, PageKind::kSingleByte, "CP1252"},
    {1253, PageKind::kSingleByte, "CP1253"}, {1254, PageKind::kSingleByte, "CP1254"},
    {1255, PageKind::kSingleByte, "CP1255"}, {1256, PageKind::kSingleByte, "CP1256"},
    {1257, PageKind::kSingleByte, "CP1257"}, {1258, PageKind::kSingleByte, "CP1258"},
    {kUtf8, PageKind::kUtf8, nullptr},
};

// Neutral text is stored as code page 1252 (see CodePage.h).
Page pageFor(std::uint32_t codePage) {
  const std::uint32_t effective = codePage == kNeutral ? 1252 : codePage;
  for (const Page& page : kPages) {
    if (page.codePage == effective)
      return page;
  }
  return {codePage, PageKind::kUnsupported, nullptr};
}

std::string unsupportedMessage(std::uint32_t codePage) {
  return "code page " + std::to_string(codePage) +
         " is not supported (supported: 0, 874, 932, 936, 949, 950, 1250-1258, 65001)";
}

// Every supported page stores ASCII as itself, so most installer strings need no lookup.
bool isAscii(std::string_view bytes) {
  return std::all_of(bytes.begin(), bytes.end(),
                     [](char b) { return static_cast<unsigned char>(b) < 0x80; });
}
bool isAscii(std::u16string_view text) {
  return std::all_of(text.begin(), text.end(), [](char16_t c) { return c < 0x80; });
}

}  // namespace

bool isSupportedCodePage(std::uint32_t codePage) {
  return pageFor(codePage).kind != PageKind::kUnsupported;
}

bool decodeCodePage(std::uint32_t codePage, std::string_view bytes, std::u16string& out,
                    std::string& error) {
  const Page page = pageFor(codePage);
  if (page.kind == PageKind::kUnsupported) {
    error = unsupportedMessage(codePage);
    return false;
  }
  if (isAscii(bytes)) {
    out.assign(bytes.begin(), bytes.end());
    return true;
  }
  switch (page.kind) {
    case PageKind::kSingleByte: {
      const SingleByteTable* table = SingleByteTable::get(page.codePage, page.converterName, error);
      return table && table->decode(bytes, out, error);
    }
    case PageKind::kMultiByte:
      return iconvDecode(page.codePage, page.converterName, bytes, out, error);
    default:
      return decodeUtf8(bytes, out, error);
  }
}

bool encodeCodePage(std::uint32_t codePage, std::u16string_view text, std::string& out,
                    std::string& error) {
  const Page page = pageFor(codePage);
  if (page.kind == PageKind::kUnsupported) {
    error = unsupportedMessage(codePage);
    return false;
  }
  if (isAscii(text)) {
    out.assign(text.begin(), text.end());
    return true;
  }
  switch (page.kind) {
    case PageKind::kSingleByte: {
      const SingleByteTable* table = SingleByteTable::get(page.codePage, page.converterName, error);
      return table && table->encode(text, out, error);
    }
    case PageKind::kMultiByte:
      return iconvEncode(page.codePage, page.converterName, text, out, error);
    default:
      return encodeUtf8(text, out, error);
  }
}

bool canEncode(std::uint32_t codePage, std::u16string_view text) {
  const Page page = pageFor(codePage);
  if (page.kind == PageKind::kSingleByte && !isAscii(text)) {
    std::string ignored;
    const SingleByteTable* table = SingleByteTable::get(page.codePage, page.converterName, ignored);
    return table && table->canEncode(text);
  }
  std::string bytes, error;
  return encodeCodePage(codePage, text, bytes, error);
}

}  // namespace odlex::storage
