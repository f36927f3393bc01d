// The two formatters of TalString: printf-style directives with typed arguments, and the
// numbered inserts of message-table texts.

#include <cstdint>

#include "odlex/support/TalString.h"

namespace {

bool IsDigit(char16_t c) {
  return c >= u'0' && c <= u'9';
}

std::u16string Digits(std::uint64_t n, unsigned base, bool upper) {
  const char16_t* symbols = upper ? u"0123456789ABCDEF" : u"0123456789abcdef";
  std::u16string out;
  do {
    out.insert(out.begin(), symbols[n % base]);
    n /= base;
  } while (n != 0);
  return out;
}

// One parsed "%...x" directive.
struct Directive {
  bool zeroPad = false;
  std::size_t width = 0;
  char16_t conversion = 0;
};

// Renders one argument for a directive. A number's sign goes before any zero padding.
std::u16string Render(const odlex::FormatArg& arg, const Directive& d) {
  const auto& value = arg.value();
  if (const auto* text = std::get_if<std::u16string_view>(&value)) {
    return std::u16string(*text);
  }
  const bool isSigned = std::holds_alternative<std::int64_t>(value);
  const std::int64_t s = isSigned ? std::get<std::int64_t>(value) : 0;
  const std::uint64_t u = isSigned ? static_cast<std::uint64_t>(s) : std::get<std::uint64_t>(value);
  switch (d.conversion) {
    case u'c':
      return std::u16string(1, static_cast<char16_t>(u));
    case u'x':
    case u'X':
      return Digits(isSigned && s < 0 ? static_cast<std::uint32_t>(s) : u, 16,
                    d.conversion == u'X');
    case u'u':
      return Digits(isSigned && s < 0 ? static_cast<std::uint32_t>(s) : u, 10, false);
    default:
      break;
  }
  if (isSigned && s < 0) {
    std::u16string digits = Digits(0 - static_cast<std::uint64_t>(s), 10, false);
    digits.insert(digits.begin(), u'-');
    return digits;
  }
  return Digits(u, 10, false);
}

void Pad(std::u16string& out, std::u16string text, const Directive& d) {
  if (text.size() < d.width) {
    const std::size_t fill = d.width - text.size();
    const bool sign = d.zeroPad && !text.empty() && text[0] == u'-';
    text.insert(sign ? 1 : 0, fill, d.zeroPad ? u'0' : u' ');
  }
  out += text;
}

}  // namespace

TalString TalString::FormatList(const char16_t* format, std::span<const odlex::FormatArg> args) {
  const std::u16string_view fmt(format ? format : u"");
  std::u16string out;
  std::size_t nextArg = 0;
  std::size_t i = 0;
  while (i < fmt.size()) {
    if (fmt[i] != u'%') {
      out.push_back(fmt[i++]);
      continue;
    }
    const std::size_t start = i++;
    Directive d;
    if (i < fmt.size() && fmt[i] == u'0') {
      d.zeroPad = true;
      ++i;
    }
    for (int digits = 0; digits < 2 && i < fmt.size() && IsDigit(fmt[i]); ++digits, ++i) {
      d.width = d.width * 10 + (fmt[i] - u'0');
    }
    while (i < fmt.size() && (fmt[i] == u'l' || fmt[i] == u'h')) {
      ++i;
    }
    d.conversion = i < fmt.size() ? fmt[i] : 0;
    switch (d.conversion) {
      case u'%':
        out.push_back(u'%');
        break;
      case u's':
      case u'd':
      case u'i':
      case u'u':
      case u'x':
      case u'X':
      case u'c':
        if (nextArg < args.size()) {
          Pad(out, Render(args[nextArg], d), d);
        }
        ++nextArg;
        break;
      default:
        // Not a directive: keep the text as written, the current character included.
        out.append(fmt.substr(start, i - start + (i < fmt.size() ? 1 : 0)));
        break;
    }
    ++i;
  }
  return TalString(std::move(out));
}

TalString TalString::FormatMessageW(const RWWString& message, std::span<const TalString> inserts) {
  const std::u16string& text = message.u16();
  std::u16string out;
  std::size_t i = 0;
  while (i < text.size()) {
    if (text[i] != u'%' || i + 1 == text.size()) {
      out.push_back(text[i++]);
      continue;
    }
    const char16_t c = text[++i];
    if (c == u'0') {
      break;
    }
    if (IsDigit(c)) {
      std::size_t number = c - u'0';
      ++i;
      if (i < text.size() && IsDigit(text[i])) {
        number = number * 10 + (text[i++] - u'0');
      }
      // Skip a "!format!" suffix; the inserts are texts whatever it says.
      if (i < text.size() && text[i] == u'!') {
        const std::size_t close = text.find(u'!', i + 1);
        if (close != std::u16string::npos) {
          i = close + 1;
        }
      }
      if (number <= inserts.size()) {
        out += inserts[number - 1].u16();
      }
      continue;
    }
    switch (c) {
      case u'n':
        out += u"\r\n";
        break;
      case u'r':
        out.push_back(u'\r');
        break;
      case u't':
        out.push_back(u'\t');
        break;
      default:
        out.push_back(c);  // %% %. %! "% " and anything else: the character itself
        break;
    }
    ++i;
  }
  return TalString(std::move(out));
}
