// Commands that change the files inside a package: file replace (one file's bytes), file add
// (new files of a component) and compress (every file into one embedded cabinet).

#include <odlex/package/ODLEXPackageFiles.h>

#include <algorithm>

#include "Cli.h"
#include "EditCommand.h"

namespace odlex::cli {

namespace {

[[noreturn]] void fail(const TalError& error) {
  const std::string context = error.GetContext().ToUtf8();
  throw Failure(error.GetCode(),
                (context.empty() ? "" : context + ": ") + error.GetText().ToUtf8());
}

// Opens `package` for editing into the target's output (the package itself when none); the
// editor writes only when saved, and a dry run is never saved.
std::unique_ptr<ODLEXPackageFileEditor> openEditor(const std::string& package,
                                                   const EditTarget& target) {
  TalError error;
  std::unique_ptr<ODLEXPackageFileEditor> editor = ODLEXPackageFileEditor::Open(
      TalString::FromUtf8(package), TalString::FromUtf8(target.output), error);
  if (!editor)
    fail(error);
  return editor;
}

void save(ODLEXPackageFileEditor& editor, const EditTarget& target) {
  TalError error;
  if (!target.dryRun && !editor.Save(error))
    fail(error);
}

// Prints the File row facts of `key` as "file KEY SIZE VERSION LANGUAGE"; their JSON object.
nlohmann::json describe(const ODLEXPackageFileEditor& editor, const std::string& key, bool asJson) {
  const auto& files = editor.GetFiles();
  const auto file = std::find_if(files.begin(), files.end(),
                                 [&](const ODLEXPackageFile& f) { return f.key.ToUtf8() == key; });
  if (file == files.end())
    return {};
  if (!asJson)
    printFields({u"file", file->key.u16(), TalString::FromUtf8(std::to_string(file->size)).u16(),
                 file->version.u16(), file->language.u16()});
  return {{"file", key},
          {"size", file->size},
          {"version", file->version.ToUtf8()},
          {"language", file->language.ToUtf8()},
          {"cabinet", file->cabinet.ToUtf8()}};
}

void addReplace(Commands& commands) {
  struct Options : PackageEdit {
    std::string key;
    std::string newFile;
  };
  auto options = std::make_shared<Options>();
  declareEditCommand(
      commands,
      {"file replace",
       "put NEWFILE's bytes in place of the file FILEKEY: its embedded cabinet is rewritten, the "
       "package's other cabinets are kept as they are, and the File row (size, and version and "
       "language from a version resource) and MsiFileHash row describe the new bytes; a file "
       "lying beside the package (external cabinet or uncompressed) is refused",
       "odlex file replace product.msi Readme readme-v2.txt -o patched.msi"},
      *options, R"({"file", "size", "version", "language", "cabinet"})",
      [options](CLI::App& command) {
        command.add_option("FILEKEY", options->key, "the file to replace (a File key)")->required();
        command.add_option("NEWFILE", options->newFile, "the file whose bytes it gets")->required();
      },
      [options] {
        std::unique_ptr<ODLEXPackageFileEditor> editor =
            openEditor(options->package, options->edit);
        TalError error;
        if (!editor->ReplaceFile(TalString::FromUtf8(options->key),
                                 TalString::FromUtf8(options->newFile), error))
          fail(error);
        const nlohmann::json file = describe(*editor, options->key, options->json);
        if (options->json)
          printJson(file);
        save(*editor, options->edit);
        return 0;
      });
}

void addAdd(Commands& commands) {
  struct Options : PackageEdit {
    std::string component;
    std::vector<std::string> files;
  };
  auto options = std::make_shared<Options>();
  declareEditCommand(
      commands,
      {"file add",
       "add FILEs to COMPONENT, in its folder: File rows with keys made from the names, "
       "\"SHORT|long\" names, sizes, versions or hashes and sequence numbers after the last, "
       "their bytes in a new embedded cabinet with its own Media row; prints one line per new "
       "file",
       "odlex file add product.msi MainExecutable extra.dll notes.txt -o more.msi"},
      *options, R"({"files": [{"file", "size", "version", "language", "cabinet"}]})",
      [options](CLI::App& command) {
        command.add_option("COMPONENT", options->component, "the Component the files belong to")
            ->required();
        command.add_option("FILE", options->files, "a file to add")->required();
      },
      [options] {
        std::unique_ptr<ODLEXPackageFileEditor> editor =
            openEditor(options->package, options->edit);
        std::vector<TalString> files;
        for (const std::string& file : options->files)
          files.push_back(TalString::FromUtf8(file));
        std::vector<TalString> keys;
        TalError error;
        if (!editor->AddFiles(TalString::FromUtf8(options->component), files, keys, error))
          fail(error);
        nlohmann::json added = nlohmann::json::array();
        for (const TalString& key : keys)
          added.push_back(describe(*editor, key.ToUtf8(), options->json));
        if (options->json)
          printJson({{"files", added}});
        save(*editor, options->edit);
        return 0;
      });
}

void addCompress(Commands& commands) {
  auto options = std::make_shared<PackageEdit>();
  declareEditCommand(
      commands,
      {"compress",
       "put every file of the package into one embedded MSZIP cabinet, from wherever its bytes "
       "are (uncompressed beside the package, as in an administrative image, or in cabinets "
       "beside it or inside it): one Media row, files numbered 1, 2, ..., summary marked "
       "compressed; prints the number of files and the cabinet",
       "odlex compress image/product.msi -o product.msi"},
      *options, R"({"files", "cabinet"})", nullptr, [options] {
        std::unique_ptr<ODLEXPackageFileEditor> editor =
            openEditor(options->package, options->edit);
        TalError error;
        if (!editor->Compress(error))
          fail(error);
        const auto& files = editor->GetFiles();
        const std::string cabinet = files.empty() ? "" : files.front().cabinet.ToUtf8();
        if (options->json)
          printJson({{"files", files.size()}, {"cabinet", cabinet}});
        else
          printFields({u"files", TalString::FromUtf8(std::to_string(files.size())).u16(),
                       TalString::FromUtf8(cabinet).u16()});
        save(*editor, options->edit);
        return 0;
      });
}

}  // namespace

void addFileEditCommands(Commands& commands) {
  addReplace(commands);
  addAdd(commands);
  addCompress(commands);
}

}  // namespace odlex::cli
