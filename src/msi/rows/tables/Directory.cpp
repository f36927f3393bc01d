// The hand-written members of MSITDirectory and MSIEDirectory: folder paths over the
// Directory rows of a table, and the short name of a row's DefaultDir.

#include <string>
#include <string_view>

#include "msi/directory/AddPath.h"
#include "msi/directory/DefaultDir.h"
#include "msi/directory/DirectoryPath.h"
#include "msi/directory/ShortName.h"
#include "msi/engine/Result.h"
#include "msi/rows/tables/DirectoryTableModel.h"
#include "odlex/msi/MSIDatabase.h"
#include "odlex/msi/MSIRows.h"
#include "odlex/support/TalError.h"

namespace {

using odlex::directory::DirectoryModel;
using odlex::directory::Result;

using PathQuery = Result<std::u16string> (*)(const DirectoryModel&, std::u16string_view, bool, bool,
                                             bool);

TalString pathOf(MSITable* owner, const TalString& key, PathQuery query, bool forDisplay,
                 bool toRoot, bool shortNames) {
  if (!owner) {
    return TalString();
  }
  const odlex::rows::DirectoryTableModel model(*owner);
  const auto path = query(model, key.u16(), forDisplay, toRoot, shortNames);
  return path ? TalString(path.value()) : TalString();
}

}  // namespace

TalString MSITDirectory::expandLeadingProperty(const TalString& target) const {
  constexpr int kMaxDepth = 16;
  std::u16string path = target.u16();
  for (int depth = 0; properties_ && depth < kMaxDepth; ++depth) {
    const std::size_t close = path.find(u']');
    if (path.empty() || path[0] != u'[' || close == std::u16string::npos)
      break;
    const TalString name(path.substr(1, close - 1));
    if (Find(name))
      break;
    const MSIEProperty* property = properties_->Find(name);
    if (!property || !property->GetValue().u16().starts_with(u"["))
      break;
    path = property->GetValue().u16() + path.substr(close + 1);
  }
  return TalString(path);
}

MSIEDirectory* MSITDirectory::GetRoot() {
  if (MSIEDirectory* target = Find(TalString(u"TARGETDIR")))
    return target;
  for (RWCollectable* item : GetTable()) {
    auto* row = static_cast<MSIEDirectory*>(item);
    const TalString parent = row->GetDirectoryParent();
    if (!row->IsDeleted() && (parent.u16().empty() || parent == row->GetDirectory()))
      return row;
  }
  return nullptr;
}

MSIEDirectory* MSITDirectory::Add(const TalString& target) {
  odlex::rows::DirectoryTableModel model(*this);
  const TalString expanded = expandLeadingProperty(target);
  return leafOrError(odlex::directory::addTargetPath(model, expanded.u16()),
                     TalString::Format(u"the folder path '%s'", target));
}

MSIEDirectory* MSITDirectory::Add(const TalString& source, const TalString& target) {
  odlex::rows::DirectoryTableModel model(*this);
  return leafOrError(
      odlex::directory::addSourceTargetPath(model, source.u16(), target.u16()),
      TalString::Format(u"the source path '%s' with the target path '%s'", source, target));
}

MSIEDirectory* MSITDirectory::leafOrError(const Result<std::u16string>& added,
                                          const TalString& what) {
  if (added)
    return Find(TalString(added.value()));
  ReportError(odlex::engine::kInvalidParameter,
              TalString::Format(u"cannot add %s: %s", what, added.error()));
  return nullptr;
}

TalString MSIEDirectory::GetSourcePath(bool forDisplay, bool toRoot, bool shortNames) const {
  return pathOf(GetOwner(), GetDirectory(), odlex::directory::sourcePath, forDisplay, toRoot,
                shortNames);
}

TalString MSIEDirectory::GetTargetPath(bool forDisplay, bool toRoot, bool shortNames) const {
  return pathOf(GetOwner(), GetDirectory(), odlex::directory::targetPath, forDisplay, toRoot,
                shortNames);
}

void MSIEDirectory::SplitString(const TalString& text, char16_t separator, TalString& before,
                                TalString& after) {
  const std::u16string whole = text.u16();
  const std::size_t at = whole.find(separator);
  if (at == std::u16string::npos) {
    before = TalString(whole);
    after = TalString();
    return;
  }
  before = TalString(whole.substr(0, at));
  after = TalString(whole.substr(at + 1));
}

TalString MSIEDirectory::GetShortDefaultDir() const {
  const auto defaultDir = odlex::directory::DefaultDir::parse(GetDefaultDir().u16());
  return defaultDir ? TalString(defaultDir->target().shortName()) : TalString();
}

void MSIEDirectory::SetShortDefaultDir(const TalString& shortName) {
  auto defaultDir = odlex::directory::DefaultDir::parse(GetDefaultDir().u16());
  if (!defaultDir || defaultDir->target().isParent() ||
      (!shortName.isNull() && !odlex::directory::isValidShortName(shortName.u16()))) {
    return;
  }
  defaultDir->target().setShortName(shortName.u16());
  SetDefaultDir(TalString(defaultDir->format()));
}
