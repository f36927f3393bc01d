#pragma once
// Splits query text into tokens. Keywords are recognised without regard to case; names keep
// their case (installer names are case-sensitive). A name that clashes with a keyword is
// written in back quotes: `Order`. String literals are in single quotes and have no escape
// for a quote inside them, as in the installer's own dialect.

#include <cstdint>
#include <string_view>

#include "msi/engine/Result.h"
#include "msi/query/Diagnostics.h"

namespace odlex::query {

// Longest query text accepted, in UTF-16 code units.
constexpr std::size_t kMaxQueryLength = 1 << 20;

enum class TokenKind {
  kEnd,
  kName,        // bare name: a letter or '_' then letters, digits, '_'
  kQuotedName,  // `any text but a back quote`
  kKeyword,
  kString,     // 'text'
  kInteger,    // decimal digits, with an optional '-' directly before them
  kParameter,  // ?
  kComma,
  kDot,
  kStar,
  kOpenParen,
  kCloseParen,
  kEqual,
  kNotEqual,
  kLess,
  kGreater,
  kLessEqual,
  kGreaterEqual,
};

enum class Keyword {
  kNone,
  kSelect,
  kDistinct,
  kFrom,
  kWhere,
  kAnd,
  kOr,
  kIs,
  kNot,
  kNull,
  kOrder,
  kBy
};

struct Token {
  TokenKind kind = TokenKind::kEnd;
  Keyword keyword = Keyword::kNone;
  // The token as written in the query, for messages.
  std::u16string_view source;
  // The value: the name or string without its quotes.
  std::u16string_view text;
  std::int32_t integer = 0;
  Position position;
};

// How a token is shown in a message: its text in quotes, or "end of query".
std::string describe(const Token& token);
// The keyword as written in messages ("FROM").
std::string_view keywordName(Keyword keyword);

class Lexer {
 public:
  explicit Lexer(std::u16string_view text) : text_(text) {}

  // Reads the next token. On malformed text returns false with `error` set to
  // kBadQuerySyntax and the place of the fault.
  bool next(Token& token, engine::Error& error);

 private:
  void skipSpace();
  char16_t peek(std::size_t ahead = 0) const {
    return offset_ + ahead < text_.size() ? text_[offset_ + ahead] : u'\0';
  }
  bool atEnd() const { return offset_ >= text_.size(); }
  void advance(std::size_t count = 1);
  bool readQuoted(char16_t quote, Token& token, engine::Error& error);
  bool readInteger(Token& token, engine::Error& error);
  void readName(Token& token);
  bool readSymbol(Token& token, engine::Error& error);

  std::u16string_view text_;
  std::size_t offset_ = 0;
  Position position_;
};

}  // namespace odlex::query
