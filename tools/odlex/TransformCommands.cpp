// Commands on transforms: transform generate, apply, show and embed. A transform is named by its
// file, or, where a package is given, as ":NAME" for one embedded in the package.
//
// Flags are given as comma-separated names or as a number: --suppress takes add-existing-row,
// delete-missing-row, add-existing-table, delete-missing-table, update-missing-row,
// change-codepage; --validate takes language, product, platform, major-version, minor-version,
// update-version, new-less-base-version, new-less-equal-base-version, new-equal-base-version,
// new-greater-equal-base-version, new-greater-base-version, upgrade-code.

#include <cstdio>

#include "Cli.h"
#include "msi/engine/Text.h"
#include "msi/transform/Transform.h"
#include "storage/FileSystem.h"

namespace odlex::cli {

namespace {

using OpenMode = engine::Database::OpenMode;

// Flags checked when the words are parsed, so that an unknown name is a usage mistake.
CLI::Validator flagWords(const std::vector<transform::FlagName>& names) {
  return CLI::Validator(
      [&names](std::string& text) {
        std::uint32_t flags = 0;
        std::string error;
        return transform::parseFlags(text, names, flags, error) ? std::string() : error;
      },
      "FLAGS");
}

std::uint32_t flagsOf(const std::string& text, const std::vector<transform::FlagName>& names) {
  std::uint32_t flags = 0;
  std::string unused;
  transform::parseFlags(text, names, flags, unused);
  return flags;
}

// The transform FILE, or the one embedded in `db` when FILE is ":NAME".
storage::CompoundNode readTransform(const engine::Database& db, const std::string& file) {
  storage::CompoundNode tree;
  engine::Error error;
  const bool read =
      file.starts_with(':')
          ? db.readStorage(engine::fromUtf8(file.substr(1)), tree, error)
          : transform::readTransformFile(storage::FileSystem::current(), file, tree, error);
  if (!read)
    throw Failure(error);
  return tree;
}

transform::DecodedTransform decode(const engine::Database& db, const std::string& file) {
  transform::DecodedTransform decoded;
  engine::Error error;
  if (!transform::decodeTransform(readTransform(db, file), db, decoded, error))
    throw Failure(error);
  return decoded;
}

void addGenerate(Commands& commands) {
  struct Options {
    std::string base, target, output, validate, suppress;
  };
  auto options = std::make_shared<Options>();
  CLI::App& command = commands.add(
      "transform generate",
      "write the transform that turns BASE into TARGET; nothing is written when they do not "
      "differ",
      "odlex transform generate v1.msi v2.msi -o v1-to-v2.mst --suppress add-existing-row",
      [options] {
        auto base = openPackage(options->base, OpenMode::kReadOnly);
        auto target = openPackage(options->target, OpenMode::kReadOnly);
        const transform::TransformOptions flags{
            flagsOf(options->suppress, transform::errorConditionNames()),
            flagsOf(options->validate, transform::validationNames())};
        storage::CompoundNode tree;
        bool differs = false;
        engine::Error error;
        if (!transform::generateTransform(*base, *target, flags, tree, differs, error) ||
            (differs && !transform::writeTransformFile(storage::FileSystem::current(),
                                                       options->output, tree, error)))
          throw Failure(error);
        if (!differs)
          printLine("the packages do not differ: no transform written");
        return 0;
      });
  command.add_option("BASE", options->base, "the package the transform applies to")->required();
  command.add_option("TARGET", options->target, "the package it turns BASE into")->required();
  addOutputOption(command, options->output, "the transform file to write")->required();
  command
      .add_option("--validate", options->validate,
                  "what an installer checks before applying it (names or a number)")
      ->check(flagWords(transform::validationNames()));
  command
      .add_option("--suppress", options->suppress,
                  "conditions an installer is to ignore when applying it (names or a number)")
      ->check(flagWords(transform::errorConditionNames()));
}

void addApply(Commands& commands) {
  struct Options {
    std::string package, transform, suppress;
    EditTarget edit;
  };
  auto options = std::make_shared<Options>();
  CLI::App& command = commands.add(
      "transform apply",
      "apply a transform file, or an embedded one as :NAME; every change that cannot be applied "
      "is listed, and unless suppressed nothing is written",
      "odlex transform apply product.msi french.mst --suppress add-existing-row -o french.msi",
      [options] {
        auto db = openForEdit(options->package, options->edit);
        const transform::DecodedTransform decoded = decode(*db, options->transform);
        std::vector<transform::Conflict> conflicts;
        engine::Error error;
        const std::uint32_t result = transform::applyTransform(
            *db, decoded, flagsOf(options->suppress, transform::errorConditionNames()), conflicts,
            error);
        for (const transform::Conflict& conflict : conflicts)
          std::fprintf(stderr, "odlex: %s%s\n", conflict.suppressed ? "skipped: " : "",
                       conflict.text.c_str());
        check(result, error);
        if (options->edit.dryRun) {
          for (const transform::TableEdit& edit : decoded.changes.tables)
            printLine("would change table " + engine::toUtf8(edit.name) + " (" +
                      std::to_string(edit.rows.size()) + " rows)");
          return 0;
        }
        check(db->commit(error), error);
        return 0;
      });
  addPackageArgument(command, options->package);
  command.add_option("FILE.mst", options->transform, "the transform file, or :NAME")->required();
  command
      .add_option("--suppress", options->suppress,
                  "conditions to ignore (names or a number), besides those the transform "
                  "names itself")
      ->check(flagWords(transform::errorConditionNames()));
  addEditOptions(command, options->edit);
}

void addShow(Commands& commands) {
  struct Options {
    std::string transform, base;
    bool json = false;
  };
  auto options = std::make_shared<Options>();
  CLI::App& command = commands.add(
      "transform show",
      "the rows a transform adds, changes and deletes, as the installer's _TransformView shows "
      "them: TABLE, COLUMN (a column, INSERT, DELETE, CREATE or DROP), ROW (the key values), "
      "DATA (the new value) and CURRENT (the value in the base)",
      "odlex transform show french.mst --base product.msi", [options] {
        auto base = openPackage(options->base, OpenMode::kReadOnly);
        const auto rows = transform::transformViewRows(decode(*base, options->transform), *base);
        if (options->json) {
          nlohmann::json changes = nlohmann::json::array();
          for (const transform::ViewRow& row : rows)
            changes.push_back({{"table", engine::toUtf8(row.table)},
                               {"column", engine::toUtf8(row.column)},
                               {"row", engine::toUtf8(row.row)},
                               {"data", engine::toUtf8(row.data)},
                               {"current", engine::toUtf8(row.current)}});
          printJson({{"changes", changes}});
          return 0;
        }
        for (const transform::ViewRow& row : rows)
          printFields({row.table, row.column, row.row, row.data, row.current});
        return 0;
      });
  command.add_option("FILE.mst", options->transform, "the transform file, or :NAME")->required();
  command.add_option("--base", options->base, "the package the transform applies to")->required();
  addJsonFlag(command, options->json,
              R"({"changes": [{"table", "column", "row", "data", "current"}]})");
}

void addEmbed(Commands& commands) {
  struct Options {
    std::string package, transform, name;
    EditTarget edit;
  };
  auto options = std::make_shared<Options>();
  CLI::App& command = commands.add(
      "transform embed",
      "store a transform in the package as the sub-storage NAME, to be applied as :NAME",
      "odlex transform embed product.msi french.mst french", [options] {
        auto db = openForEdit(options->package, options->edit);
        storage::CompoundNode tree = readTransform(*db, options->transform);
        transform::DecodedTransform decoded;
        engine::Error error;
        if (!transform::decodeTransform(tree, *db, decoded, error))
          throw Failure(error);
        if (options->edit.dryRun) {
          printLine("would embed " + options->transform + " as " + options->name);
          return 0;
        }
        db->setStorage(engine::fromUtf8(options->name), std::move(tree));
        check(db->commit(error), error);
        return 0;
      });
  addPackageArgument(command, options->package);
  command.add_option("FILE.mst", options->transform, "the transform file")->required();
  command.add_option("NAME", options->name, "the sub-storage's name")->required();
  addEditOptions(command, options->edit);
}

}  // namespace

void addTransformCommands(Commands& commands) {
  addGenerate(commands);
  addApply(commands);
  addShow(commands);
  addEmbed(commands);
}

}  // namespace odlex::cli
