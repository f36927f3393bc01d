#include "msi/directory/DefaultDir.h"

#include <utility>

namespace odlex::directory {

FolderNames::FolderNames(std::u16string longName, std::u16string shortName)
    : long_(std::move(longName)) {
  setShortName(std::move(shortName));
}

Result<FolderNames> FolderNames::parse(std::u16string_view text) {
  const auto bar = text.find(u'|');
  if (bar == std::u16string_view::npos) {
    if (text.empty()) {
      return Error{u"empty folder name in DefaultDir"};
    }
    return FolderNames(std::u16string(text));
  }
  const auto shortPart = text.substr(0, bar);
  const auto longPart = text.substr(bar + 1);
  if (shortPart.empty() || longPart.empty()) {
    return Error{u"empty short or long name in DefaultDir \"" + std::u16string(text) + u"\""};
  }
  if (longPart.find(u'|') != std::u16string_view::npos) {
    return Error{u"more than one '|' in DefaultDir \"" + std::u16string(text) + u"\""};
  }
  FolderNames names;
  names.long_ = longPart;
  names.short_ = shortPart;
  return names;
}

std::u16string FolderNames::format() const {
  return short_.empty() ? long_ : short_ + u"|" + long_;
}

void FolderNames::setShortName(std::u16string shortName) {
  short_ = shortName == long_ ? std::u16string() : std::move(shortName);
}

DefaultDir::DefaultDir(FolderNames target) : target_(std::move(target)) {}

DefaultDir::DefaultDir(FolderNames target, FolderNames source)
    : target_(std::move(target)), source_(std::move(source)), hasSource_(true) {}

Result<DefaultDir> DefaultDir::parse(std::u16string_view text) {
  const auto colon = text.find(u':');
  auto target = FolderNames::parse(text.substr(0, colon));
  if (!target) {
    return Error{target.error()};
  }
  if (colon == std::u16string_view::npos) {
    return DefaultDir(std::move(target.value()));
  }
  const auto sourceText = text.substr(colon + 1);
  if (sourceText.find(u':') != std::u16string_view::npos) {
    return Error{u"more than one ':' in DefaultDir \"" + std::u16string(text) + u"\""};
  }
  auto source = FolderNames::parse(sourceText);
  if (!source) {
    return Error{source.error()};
  }
  return DefaultDir(std::move(target.value()), std::move(source.value()));
}

std::u16string DefaultDir::format() const {
  return hasSource_ ? target_.format() + u":" + source_.format() : target_.format();
}

FolderNames& DefaultDir::source() {
  if (!hasSource_) {
    source_ = target_;
    hasSource_ = true;
  }
  return source_;
}

}  // namespace odlex::directory
