#define PCRE2_CODE_UNIT_WIDTH 16
#include "odlex/support/RWWRegexp.h"

#include <pcre2.h>

#include <cstdint>
#include <iterator>
#include <memory>

#include "odlex/support/TalString.h"

namespace {

// Bounds on the work of one match, so that a pattern with runaway backtracking gives up.
constexpr std::uint32_t kMatchLimit = 10'000'000;
constexpr std::uint32_t kDepthLimit = 100'000;

struct MatchDataDeleter {
  void operator()(pcre2_match_data* p) const { pcre2_match_data_free(p); }
};
struct MatchContextDeleter {
  void operator()(pcre2_match_context* p) const { pcre2_match_context_free(p); }
};

PCRE2_SPTR Units(const std::u16string& s) {
  return reinterpret_cast<PCRE2_SPTR>(s.data());
}

}  // namespace

struct RWWRegexp::Compiled {
  pcre2_code* code = nullptr;
  ~Compiled() { pcre2_code_free(code); }
};

RWWRegexp::RWWRegexp(const RWWString& pattern) {
  int errorCode = 0;
  PCRE2_SIZE errorOffset = 0;
  // UTF mode makes a surrogate pair one character; invalid UTF-16 in a subject (a lone
  // surrogate) is tolerated rather than failing the match.
  pcre2_code* code =
      pcre2_compile(Units(pattern.u16()), pattern.length(), PCRE2_UTF | PCRE2_MATCH_INVALID_UTF,
                    &errorCode, &errorOffset, nullptr);
  if (code == nullptr) {
    status_ = errorCode == PCRE2_ERROR_NOMEMORY            ? NOMEMORY
              : errorCode == PCRE2_ERROR_PATTERN_TOO_LARGE ? TOOLONG
                                                           : ILLEGAL;
    PCRE2_UCHAR buffer[256];
    const int n = pcre2_get_error_message(errorCode, buffer, std::size(buffer));
    error_ = RWWString(std::u16string(reinterpret_cast<const char16_t*>(buffer), n > 0 ? n : 0));
    error_.append(u" at offset ")
        .append(TalString::FromInt(static_cast<std::int64_t>(errorOffset)));
    return;
  }
  auto compiled = std::make_shared<Compiled>();
  compiled->code = code;
  compiled_ = std::move(compiled);
}

std::size_t RWWRegexp::index(const RWWString& text, std::size_t* matchLength,
                             std::size_t start) const {
  if (matchLength != nullptr) {
    *matchLength = 0;
  }
  if (!compiled_ || start > text.length()) {
    return RW_NPOS;
  }
  const std::unique_ptr<pcre2_match_data, MatchDataDeleter> data(
      pcre2_match_data_create_from_pattern(compiled_->code, nullptr));
  const std::unique_ptr<pcre2_match_context, MatchContextDeleter> context(
      pcre2_match_context_create(nullptr));
  if (!data || !context) {
    return RW_NPOS;
  }
  pcre2_set_match_limit(context.get(), kMatchLimit);
  pcre2_set_depth_limit(context.get(), kDepthLimit);
  const int rc = pcre2_match(compiled_->code, Units(text.u16()), text.length(), start, 0,
                             data.get(), context.get());
  if (rc < 0) {
    return RW_NPOS;
  }
  const PCRE2_SIZE* ovector = pcre2_get_ovector_pointer(data.get());
  if (matchLength != nullptr) {
    *matchLength = ovector[1] > ovector[0] ? ovector[1] - ovector[0] : 0;
  }
  return ovector[0];
}
