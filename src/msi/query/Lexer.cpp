#include "msi/query/Lexer.h"

#include <array>
#include <limits>
#include <utility>

namespace odlex::query {
namespace {

constexpr std::array<std::pair<std::string_view, Keyword>, 11> kKeywords{{
    {"SELECT", Keyword::kSelect},
    {"DISTINCT", Keyword::kDistinct},
    {"FROM", Keyword::kFrom},
    {"WHERE", Keyword::kWhere},
    {"AND", Keyword::kAnd},
    {"OR", Keyword::kOr},
    {"IS", Keyword::kIs},
    {"NOT", Keyword::kNot},
    {"NULL", Keyword::kNull},
    {"ORDER", Keyword::kOrder},
    {"BY", Keyword::kBy},
}};

bool isDigit(char16_t c) {
  return c >= u'0' && c <= u'9';
}
bool isNameStart(char16_t c) {
  return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || c == u'_';
}
bool isNamePart(char16_t c) {
  return isNameStart(c) || isDigit(c);
}
bool isSpace(char16_t c) {
  return c == u' ' || c == u'\t' || c == u'\r' || c == u'\n';
}

char16_t upper(char16_t c) {
  return c >= u'a' && c <= u'z' ? char16_t(c - u'a' + u'A') : c;
}

Keyword keywordOf(std::u16string_view word) {
  for (const auto& [name, keyword] : kKeywords) {
    if (name.size() != word.size())
      continue;
    bool same = true;
    for (std::size_t i = 0; i < name.size() && same; ++i)
      same = upper(word[i]) == name[i];
    if (same)
      return keyword;
  }
  return Keyword::kNone;
}

}  // namespace

std::string_view keywordName(Keyword keyword) {
  for (const auto& [name, candidate] : kKeywords) {
    if (candidate == keyword)
      return name;
  }
  return "?";
}

std::string describe(const Token& token) {
  return token.kind == TokenKind::kEnd ? "end of query" : quoteText(token.source);
}

void Lexer::advance(std::size_t count) {
  for (; count > 0 && !atEnd(); --count, ++offset_) {
    if (text_[offset_] == u'\n') {
      ++position_.line;
      position_.column = 1;
    } else {
      ++position_.column;
    }
  }
}

void Lexer::skipSpace() {
  while (!atEnd() && isSpace(peek()))
    advance();
}

bool Lexer::next(Token& token, engine::Error& error) {
  skipSpace();
  token = Token{};
  token.position = position_;
  std::size_t start = offset_;
  bool ok = true;
  if (atEnd()) {
    token.kind = TokenKind::kEnd;
  } else if (peek() == u'\'' || peek() == u'`') {
    ok = readQuoted(peek(), token, error);
  } else if (isDigit(peek()) || (peek() == u'-' && isDigit(peek(1)))) {
    ok = readInteger(token, error);
  } else if (isNameStart(peek())) {
    readName(token);
  } else {
    ok = readSymbol(token, error);
  }
  token.source = text_.substr(start, offset_ - start);
  if (token.kind != TokenKind::kString && token.kind != TokenKind::kQuotedName) {
    token.text = token.source;
  }
  return ok;
}

bool Lexer::readQuoted(char16_t quote, Token& token, engine::Error& error) {
  bool isString = quote == u'\'';
  advance();
  std::size_t start = offset_;
  while (!atEnd() && peek() != quote)
    advance();
  if (atEnd()) {
    return fail(error, engine::kBadQuerySyntax, token.position,
                isString ? "unterminated string: no closing '" : "unterminated name: no closing `");
  }
  token.text = text_.substr(start, offset_ - start);
  advance();
  if (!isString && token.text.empty()) {
    return fail(error, engine::kBadQuerySyntax, token.position, "empty name ``");
  }
  token.kind = isString ? TokenKind::kString : TokenKind::kQuotedName;
  return true;
}

bool Lexer::readInteger(Token& token, engine::Error& error) {
  std::size_t start = offset_;
  bool negative = peek() == u'-';
  if (negative)
    advance();
  // The most negative 32-bit value is the null integer, so the range is symmetric.
  constexpr std::int64_t kLimit = std::numeric_limits<std::int32_t>::max();
  std::int64_t value = 0;
  bool tooLarge = false;
  while (isDigit(peek())) {
    value = value * 10 + (peek() - u'0');
    if (value > kLimit) {
      tooLarge = true;
      value = kLimit;
    }
    advance();
  }
  if (isNameStart(peek())) {
    while (isNamePart(peek()))
      advance();
    return fail(error, engine::kBadQuerySyntax, token.position,
                "malformed number " + quoteText(text_.substr(start, offset_ - start)));
  }
  if (tooLarge) {
    return fail(error, engine::kBadQuerySyntax, token.position,
                "integer out of range (at most 2147483647 either side of 0)");
  }
  token.kind = TokenKind::kInteger;
  token.integer = static_cast<std::int32_t>(negative ? -value : value);
  return true;
}

void Lexer::readName(Token& token) {
  std::size_t start = offset_;
  while (isNamePart(peek()))
    advance();
  token.keyword = keywordOf(text_.substr(start, offset_ - start));
  token.kind = token.keyword == Keyword::kNone ? TokenKind::kName : TokenKind::kKeyword;
}

bool Lexer::readSymbol(Token& token, engine::Error& error) {
  char16_t c = peek();
  char16_t following = peek(1);
  std::size_t length = 1;
  switch (c) {
    case u'?':
      token.kind = TokenKind::kParameter;
      break;
    case u',':
      token.kind = TokenKind::kComma;
      break;
    case u'.':
      token.kind = TokenKind::kDot;
      break;
    case u'*':
      token.kind = TokenKind::kStar;
      break;
    case u'(':
      token.kind = TokenKind::kOpenParen;
      break;
    case u')':
      token.kind = TokenKind::kCloseParen;
      break;
    case u'=':
      token.kind = TokenKind::kEqual;
      break;
    case u'<':
      if (following == u'>') {
        token.kind = TokenKind::kNotEqual;
        length = 2;
      } else if (following == u'=') {
        token.kind = TokenKind::kLessEqual;
        length = 2;
      } else {
        token.kind = TokenKind::kLess;
      }
      break;
    case u'>':
      token.kind = following == u'=' ? TokenKind::kGreaterEqual : TokenKind::kGreater;
      length = following == u'=' ? 2 : 1;
      break;
    default: {
      std::size_t width =
          (c >= 0xD800 && c <= 0xDBFF && following >= 0xDC00 && following <= 0xDFFF) ? 2 : 1;
      return fail(error, engine::kBadQuerySyntax, token.position,
                  "unexpected character " + quoteText(text_.substr(offset_, width)));
    }
  }
  advance(length);
  return true;
}

}  // namespace odlex::query
