// Expanding "[NAME]" references and putting them back.

#include "odlex/msi/MSITranslate.h"

#include <algorithm>
#include <vector>

namespace {

// An open "[" waiting for its "]": where it stands in the text, and its contents so far, with
// the references nested in it already replaced.
struct OpenReference {
  std::size_t at;
  std::u16string contents;
};

// "[\c]" at `at`: the installer's escape for the character c.
bool isEscape(const std::u16string& text, std::size_t at) {
  return at + 3 < text.size() && text[at + 1] == u'\\' && text[at + 3] == u']';
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

// One pass from left to right. An inner reference is replaced when its "]" is met, so the
// outer one sees its value in its name; a value put in is never read again.
TalString MSITranslate::Translate(const TalString& text, const Lookup& lookup) {
  const std::u16string& in = text.u16();
  std::u16string out;
  out.reserve(in.size());
  std::vector<OpenReference> open;
  const auto sink = [&]() -> std::u16string& { return open.empty() ? out : open.back().contents; };
  for (std::size_t at = 0; at < in.size(); ++at) {
    const char16_t c = in[at];
    if (c == u'[' && isEscape(in, at)) {
      sink() += in[at + 2];
      at += 3;
    } else if (c == u'[' && open.size() < kMaxNesting) {
      open.push_back({at, {}});
    } else if (c == u']' && !open.empty()) {
      const OpenReference reference = std::move(open.back());
      open.pop_back();
      std::u16string value;
      if (lookup(reference.contents, value))
        sink() += value;
      else
        sink().append(in, reference.at, at - reference.at + 1);
    } else {
      sink() += c;
    }
  }
  // A "[" never closed, and everything after it, stays as written.
  if (!open.empty())
    out.append(in, open.front().at, std::u16string::npos);
  return TalString(out);
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
