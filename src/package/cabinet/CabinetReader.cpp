// Reading cabinets through libgcab. Members are decompressed into files of a scratch folder
// named by their index ("0", "1", ...): the names the cabinet stores never reach the file
// system.

#include <libgcab.h>

#include <map>
#include <system_error>

#include "package/cabinet/Cabinet.h"
#include "package/cabinet/GObjectRef.h"
#include "package/cabinet/SourceInputStream.h"

namespace odlex::package {

struct CabinetReader::Handles {
  GObjectRef<GInputStream> stream;
  GObjectRef<GCabCabinet> cabinet;
  std::map<GCabFile*, std::size_t> index;  // each entry's place in members()
};

CabinetReader::CabinetReader(std::unique_ptr<Handles> handles) : handles_(std::move(handles)) {}

CabinetReader::~CabinetReader() = default;

std::unique_ptr<CabinetReader> CabinetReader::open(
    std::shared_ptr<const storage::StreamSource> source, std::string& error) {
  auto handles = std::make_unique<Handles>();
  handles->stream.reset(newSourceInputStream(std::move(source)));
  handles->cabinet.reset(gcab_cabinet_new());
  GError* failure = nullptr;
  if (!gcab_cabinet_load(handles->cabinet.get(), handles->stream.get(), nullptr, &failure)) {
    error = "not a readable cabinet: " + takeMessage(failure, "unknown reason");
    return nullptr;
  }
  std::unique_ptr<CabinetReader> reader(new CabinetReader(std::move(handles)));
  GPtrArray* folders = gcab_cabinet_get_folders(reader->handles_->cabinet.get());
  for (guint f = 0; folders && f < folders->len; ++f) {
    GSList* files = gcab_folder_get_files(static_cast<GCabFolder*>(g_ptr_array_index(folders, f)));
    for (GSList* at = files; at; at = at->next) {
      auto* file = static_cast<GCabFile*>(at->data);
      reader->handles_->index.emplace(file, reader->members_.size());
      const char* name = gcab_file_get_name(file);
      reader->members_.push_back(
          {name ? name : "", gcab_file_get_size(file), gcab_file_get_attributes(file)});
    }
    g_slist_free(files);
  }
  return reader;
}

namespace {

struct Selection {
  const std::map<GCabFile*, std::size_t>* index;
  const std::function<bool(std::size_t)>* wanted;
  std::vector<std::size_t> chosen;
};

gboolean chooseMember(GCabFile* file, gpointer data) {
  auto* selection = static_cast<Selection*>(data);
  const auto found = selection->index->find(file);
  if (found == selection->index->end() || !(*selection->wanted)(found->second))
    return FALSE;
  gcab_file_set_extract_name(file, std::to_string(found->second).c_str());
  selection->chosen.push_back(found->second);
  return TRUE;
}

}  // namespace

bool CabinetReader::extract(const std::filesystem::path& scratch,
                            const std::function<bool(std::size_t member)>& wanted, const Take& take,
                            std::string& error) {
  Selection selection{&handles_->index, &wanted, {}};
  GObjectRef<GFile> folder(g_file_new_for_path(scratch.c_str()));
  GError* failure = nullptr;
  if (!gcab_cabinet_extract_simple(handles_->cabinet.get(), folder.get(), chooseMember, &selection,
                                   nullptr, &failure)) {
    error = "cannot decompress the cabinet: " + takeMessage(failure, "unknown reason");
    return false;
  }
  for (std::size_t member : selection.chosen) {
    const std::filesystem::path file = scratch / std::to_string(member);
    std::error_code failed;
    const std::uintmax_t size = std::filesystem::file_size(file, failed);
    if (failed || size != members_[member].size) {
      error = "the cabinet's data for \"" + members_[member].name + "\" is not " +
              std::to_string(members_[member].size) + " bytes long";
      return false;
    }
    if (!take(member, file, error))
      return false;
  }
  return true;
}

}  // namespace odlex::package
