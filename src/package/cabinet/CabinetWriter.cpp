// Writing MSZIP cabinets through libgcab, straight from the members' files to the output file.

#include <libgcab.h>

#include <system_error>

#include "package/cabinet/Cabinet.h"
#include "package/cabinet/GObjectRef.h"

namespace odlex::package {

void CabinetWriter::add(std::string name, std::filesystem::path file) {
  members_.push_back({std::move(name), std::move(file)});
}

bool CabinetWriter::write(const std::filesystem::path& out, std::string& error) const {
  GObjectRef<GCabFolder> folder(gcab_folder_new(GCAB_COMPRESSION_MSZIP));
  GError* failure = nullptr;
  for (const Member& member : members_) {
    std::error_code failed;
    const std::uintmax_t size = std::filesystem::file_size(member.file, failed);
    if (failed) {
      error = "cannot read " + member.file.string() + ": " + failed.message();
      return false;
    }
    if (size > kMaxMemberSize) {
      error = member.file.string() + " is too large for a cabinet";
      return false;
    }
    GObjectRef<GFile> file(g_file_new_for_path(member.file.c_str()));
    GObjectRef<GCabFile> entry(gcab_file_new_with_file(member.name.c_str(), file.get()));
    if (!gcab_folder_add_file(folder.get(), entry.get(), FALSE, nullptr, &failure)) {
      error = "cannot add " + member.name + " to a cabinet: " + takeMessage(failure, "refused");
      return false;
    }
  }
  GObjectRef<GCabCabinet> cabinet(gcab_cabinet_new());
  if (!gcab_cabinet_add_folder(cabinet.get(), folder.get(), &failure)) {
    error = "cannot make a cabinet: " + takeMessage(failure, "refused");
    return false;
  }
  GObjectRef<GFile> target(g_file_new_for_path(out.c_str()));
  GObjectRef<GFileOutputStream> stream(g_file_replace(
      target.get(), nullptr, FALSE, G_FILE_CREATE_REPLACE_DESTINATION, nullptr, &failure));
  if (!stream) {
    error = "cannot create " + out.string() + ": " + takeMessage(failure, "refused");
    return false;
  }
  if (!gcab_cabinet_write_simple(cabinet.get(), G_OUTPUT_STREAM(stream.get()), nullptr, nullptr,
                                 nullptr, &failure) ||
      !g_output_stream_close(G_OUTPUT_STREAM(stream.get()), nullptr, &failure)) {
    error = "cannot write " + out.string() + ": " + takeMessage(failure, "unknown reason");
    return false;
  }
  return true;
}

}  // namespace odlex::package
