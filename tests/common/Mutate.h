#pragma once
// Random edits of valid input, for tests that damaged input is refused and never crashes.

#include <random>

namespace odlex::test {

// `text` after 1 to `maxEdits` random one-character insertions, deletions or replacements, the
// characters drawn from `alphabet`.
template <class String>
String mutated(String text, const String& alphabet, std::mt19937& random, unsigned maxEdits) {
  for (unsigned edits = 1 + random() % maxEdits; edits > 0; --edits) {
    const std::size_t at = random() % (text.size() + 1);
    const auto c = alphabet[random() % alphabet.size()];
    const unsigned kind = random() % 3;
    if (kind == 0)
      text.insert(text.begin() + static_cast<std::ptrdiff_t>(at), c);
    else if (at < text.size() && kind == 1)
      text.erase(at, 1);
    else if (at < text.size())
      text[at] = c;
  }
  return text;
}

}  // namespace odlex::test
