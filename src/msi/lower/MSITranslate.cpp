// Expanding "[NAME]" references and putting them back.

#include "odlex/msi/MSITranslate.h"

#include <algorithm>
#include <vector>

namespace {

// One pass over `text`: references to known names replaced. Escapes are kept as they are, or
// resolved with `resolveEscapes` (the last pass, so that an escaped bracket is never read as
// part of a reference). Sets `changed` when a reference was replaced.
std::u16string translateOnce(const std::u16string& text, const MSITranslate::Lookup& lookup,
                             bool resolveEscapes, bool& changed) {
  std::u16string out;
  out.reserve(text.size());
  std::size_t at = 0;
  while (at < text.size()) {
    const std::size_t open = text.find(u'[', at);
    if (open == std::u16string::npos)
      break;
    // "[\c]" is the character c, whatever it is (brackets included).
    if (open + 3 < text.size() && text[open + 1] == u'\\' && text[open + 3] == u']') {
      out.append(text, at, open - at);
      if (resolveEscapes)
        out += text[open + 2];
      else
        out.append(text, open, 4);
      at = open + 4;
      continue;
    }
    const std::size_t close = text.find(u']', open + 1);
    if (close == std::u16string::npos)
      break;
    out.append(text, at, open - at);
    const std::u16string name = text.substr(open + 1, close - open - 1);
    std::u16string value;
    if (lookup(name, value)) {
      out += value;
      changed = true;
    } else {
      out.append(text, open, close - open + 1);
    }
    at = close + 1;
  }
  out.append(text, at, std::u16string::npos);
  return out;
}

}  // namespace

void MSITranslate::SetVariable(const TalString& name, const TalString& value) {
  variables_[name.u16()] = value.u16();
}

void MSITranslate::RemoveVariable(const TalString& name) {
  variables_.erase(name.u16());
}

bool MSITranslate::GetVariable(const TalString& name, TalString& value) const {
  auto found = variables_.find(name.u16());
  if (found == variables_.end())
    return false;
  value = TalString(found->second);
  return true;
}

TalString MSITranslate::Translate(const TalString& text) const {
  return Translate(text, [this](const std::u16string& name, std::u16string& value) {
    auto found = variables_.find(name);
    if (found == variables_.end())
      return false;
    value = found->second;
    return true;
  });
}

TalString MSITranslate::Translate(const TalString& text, const Lookup& lookup) {
  std::u16string current = text.u16();
  for (int pass = 0; pass < kMaxPasses; ++pass) {
    bool changed = false;
    current = translateOnce(current, lookup, false, changed);
    if (!changed)
      break;
  }
  bool changed = false;
  const auto noVariables = [](const std::u16string&, std::u16string&) { return false; };
  return TalString(translateOnce(current, noVariables, true, changed));
}

TalString MSITranslate::UnFormat(const TalString& text) const {
  std::vector<const std::pair<const std::u16string, std::u16string>*> byLength;
  for (const auto& variable : variables_) {
    if (!variable.second.empty())
      byLength.push_back(&variable);
  }
  std::stable_sort(byLength.begin(), byLength.end(), [](const auto* a, const auto* b) {
    return a->second.size() > b->second.size();
  });
  // Replaced parts are kept apart from the text still to be searched, so a value is never
  // found inside a reference put in by a longer one.
  struct Piece {
    std::u16string text;
    bool replaced;
  };
  std::vector<Piece> pieces{{text.u16(), false}};
  for (const auto* variable : byLength) {
    std::vector<Piece> next;
    for (Piece& piece : pieces) {
      if (piece.replaced) {
        next.push_back(std::move(piece));
        continue;
      }
      std::size_t at = 0;
      for (std::size_t found;
           (found = piece.text.find(variable->second, at)) != std::u16string::npos;
           at = found + variable->second.size()) {
        next.push_back({piece.text.substr(at, found - at), false});
        next.push_back({u"[" + variable->first + u"]", true});
      }
      next.push_back({piece.text.substr(at), false});
    }
    pieces = std::move(next);
  }
  std::u16string out;
  for (const Piece& piece : pieces)
    out += piece.text;
  return TalString(out);
}
