// Resolving files: directory paths through the Directory table's parent links, cabinets through
// the Media table's sequence ranges.

#include "package/files/FileLayout.h"

#include <algorithm>
#include <map>
#include <optional>

#include "msi/directory/DirectoryPath.h"
#include "package/files/TableColumns.h"

namespace odlex::package {

namespace {

// msiextract's name for the program files folder, whose Directory row is usually ".".
constexpr std::u16string_view kProgramFilesKey = u"ProgramFilesFolder";
constexpr std::u16string_view kProgramFilesName = u"Program Files";

directory::MemoryDirectoryModel directoryModel(const engine::Database& database) {
  directory::MemoryDirectoryModel model;
  if (const engine::Table* table = database.findTable(u"Directory")) {
    const TableColumns rows(database, *table);
    for (std::size_t row = 0; row < rows.rows(); ++row)
      model.add({std::u16string(rows.text(row, u"Directory")),
                 std::u16string(rows.text(row, u"Directory_Parent")),
                 std::u16string(rows.text(row, u"DefaultDir"))});
  }
  return model;
}

struct DirectoryPaths {
  std::optional<std::u16string> target;  // "a/b/" below the root, nothing when unresolved
  std::optional<std::u16string> source;
};

DirectoryPaths pathsOf(const directory::DirectoryModel& model, std::u16string_view key,
                       bool shortSourceNames) {
  const auto chain = directory::parentChain(model, key);
  if (!chain)
    return {};
  DirectoryPaths paths{u"", u""};
  for (auto link = chain->rbegin(); link != chain->rend(); ++link) {
    if (link->row.isRoot())
      continue;
    const directory::FolderNames& target = link->defaultDir.target();
    if (!target.isParent())
      *paths.target += target.longName() + u"/";
    else if (link->row.key == kProgramFilesKey)
      *paths.target += std::u16string(kProgramFilesName) + u"/";
    const directory::FolderNames& source = link->defaultDir.source();
    if (!source.isParent())
      *paths.source += (shortSourceNames ? source.shortName() : source.longName()) + u"/";
  }
  return paths;
}

struct MediaRange {
  std::int32_t lastSequence;
  std::u16string cabinet;
};

std::vector<MediaRange> mediaRanges(const engine::Database& database) {
  std::vector<std::pair<std::int32_t, MediaRange>> byDisk;
  if (const engine::Table* table = database.findTable(u"Media")) {
    const TableColumns rows(database, *table);
    for (std::size_t row = 0; row < rows.rows(); ++row)
      byDisk.push_back({rows.integer(row, u"DiskId").value_or(0),
                        {rows.integer(row, u"LastSequence").value_or(0),
                         std::u16string(rows.text(row, u"Cabinet"))}});
  }
  std::sort(byDisk.begin(), byDisk.end(),
            [](const auto& a, const auto& b) { return a.first < b.first; });
  std::vector<MediaRange> ranges;
  for (auto& [disk, range] : byDisk)
    ranges.push_back(std::move(range));
  return ranges;
}

TalString talText(std::u16string_view text) {
  return TalString(std::u16string(text));
}

}  // namespace

std::u16string_view longNameOf(std::u16string_view name) {
  const std::size_t bar = name.find(u'|');
  return bar == std::u16string_view::npos ? name : name.substr(bar + 1);
}

std::u16string_view shortNameOf(std::u16string_view name) {
  return name.substr(0, name.find(u'|'));
}

bool isMergeModule(const engine::Database& database) {
  return !database.findTable(u"Media") && database.hasStream(kModuleCabinet);
}

int wordCountOf(const engine::Database& database) {
  if (!database.summary())
    return 0;
  const auto& properties = database.summary()->properties;
  const auto found = properties.find(storage::kPidWordCount);
  return found == properties.end() ? 0 : found->second.integer;
}

int attributesInCabinet(const engine::Database& database, int attributes) {
  attributes &= ~kFileNoncompressed;
  return (wordCountOf(database) & kSourceCompressed) ? attributes & ~kFileCompressed
                                                     : attributes | kFileCompressed;
}

bool resolveFiles(const engine::Database& database, std::vector<ODLEXPackageFile>& files,
                  engine::Error& error, std::optional<int> layout) {
  files.clear();
  const engine::Table* table = database.findTable(u"File");
  if (!table)
    return true;
  for (const char16_t* column : {u"File", u"Component_", u"FileName", u"Sequence"}) {
    if (table->columnIndex(column) < 0) {
      error = {engine::kInstallPackageInvalid,
               "the File table has no column " + TalString(column).ToUtf8()};
      return false;
    }
  }
  const int wordCount = layout.value_or(wordCountOf(database));
  const bool shortSourceNames = (wordCount & kSourceShortNames) != 0;
  const bool module = isMergeModule(database);
  const directory::MemoryDirectoryModel model = directoryModel(database);
  const std::vector<MediaRange> media = mediaRanges(database);
  std::map<std::u16string, std::u16string, std::less<>> directoryOf;
  if (const engine::Table* components = database.findTable(u"Component")) {
    const TableColumns rows(database, *components);
    for (std::size_t row = 0; row < rows.rows(); ++row)
      directoryOf.emplace(rows.text(row, u"Component"), rows.text(row, u"Directory_"));
  }
  std::map<std::u16string, DirectoryPaths, std::less<>> pathCache;
  const TableColumns rows(database, *table);
  for (std::size_t row = 0; row < rows.rows(); ++row) {
    ODLEXPackageFile file;
    file.key = talText(rows.text(row, u"File"));
    file.component = talText(rows.text(row, u"Component_"));
    file.size = rows.integer(row, u"FileSize").value_or(0);
    file.version = talText(rows.text(row, u"Version"));
    file.language = talText(rows.text(row, u"Language"));
    file.attributes = rows.integer(row, u"Attributes").value_or(0);
    file.sequence = rows.integer(row, u"Sequence").value_or(0);
    const auto directory = directoryOf.find(rows.text(row, u"Component_"));
    if (directory != directoryOf.end()) {
      file.directory = talText(directory->second);
      auto cached = pathCache.find(directory->second);
      if (cached == pathCache.end())
        cached =
            pathCache
                .emplace(directory->second, pathsOf(model, directory->second, shortSourceNames))
                .first;
      const std::u16string_view name = rows.text(row, u"FileName");
      if (cached->second.target)
        file.targetPath = talText(*cached->second.target + std::u16string(longNameOf(name)));
      if (cached->second.source)
        file.sourcePath =
            talText(*cached->second.source +
                    std::u16string(shortSourceNames ? shortNameOf(name) : longNameOf(name)));
    }
    bool compressed = (wordCount & kSourceCompressed) != 0;
    if (file.attributes & kFileNoncompressed)
      compressed = false;
    else if (file.attributes & kFileCompressed)
      compressed = true;
    if (module) {
      file.source = ODLEXFileSource::kEmbeddedCabinet;
      file.cabinet = talText(kModuleCabinet);
    } else if (!compressed) {
      file.source = ODLEXFileSource::kUncompressed;
    } else {
      const auto range = std::find_if(media.begin(), media.end(), [&](const MediaRange& m) {
        return m.lastSequence >= file.sequence;
      });
      const std::u16string_view cabinet =
          range == media.end() ? std::u16string_view() : std::u16string_view(range->cabinet);
      const bool embedded = !cabinet.empty() && cabinet.front() == u'#';
      file.source =
          embedded ? ODLEXFileSource::kEmbeddedCabinet : ODLEXFileSource::kExternalCabinet;
      file.cabinet = talText(embedded ? cabinet.substr(1) : cabinet);
    }
    files.push_back(std::move(file));
  }
  std::sort(files.begin(), files.end(), [](const ODLEXPackageFile& a, const ODLEXPackageFile& b) {
    return a.key.u16() < b.key.u16();
  });
  return true;
}

}  // namespace odlex::package
