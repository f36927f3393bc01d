// The tool's manual and its shell completion, both made from the command definitions themselves
// (the same text --help shows), so they cannot drift from what the tool accepts.

#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "Cli.h"

namespace odlex::cli {
namespace {

// A command of the tool: its words ("sequence list") and its parser entry.
struct Described {
  std::string words;
  const CLI::App* command;
};

// The help text of `command` (what its --help prints), whatever was parsed.
std::string helpOf(const CLI::App& command) {
  return command.get_formatter()->make_help(&command, command.get_name(),
                                            CLI::AppFormatMode::Normal);
}

// CLI11 keeps a group of options as a nameless command below the one it belongs to.
bool isOptionGroup(const CLI::App& command) {
  return command.get_name().empty();
}

// Every command under `app`, nouns before their verbs, in the order they were declared; the
// help and manual commands themselves are left out.
std::vector<Described> commandsOf(const CLI::App& app) {
  std::vector<Described> found;
  const std::function<void(const CLI::App&, const std::string&)> walk =
      [&](const CLI::App& parent, const std::string& prefix) {
        for (const CLI::App* command : parent.get_subcommands({})) {
          if (isOptionGroup(*command))
            continue;
          const std::string words = prefix + command->get_name();
          if (words == "help" || words == "manual" || words == "completion")
            continue;
          found.push_back({words, command});
          walk(*command, words + " ");
        }
      };
  walk(app, "");
  return found;
}

std::string markdown(const CLI::App& app) {
  std::ostringstream out;
  out << "# The odlex command-line tool\n\n"
      << "Made by `odlex manual` from the commands' own definitions; `odlex help COMMAND` shows "
         "the same text.\n\n```\n"
      << helpOf(app) << "```\n";
  for (const Described& described : commandsOf(app))
    out << "\n## odlex " << described.words << "\n\n```\n" << helpOf(*described.command) << "```\n";
  return out.str();
}

// Text for a man page line: backslashes and leading dots or quotes escaped.
std::string roff(const std::string& text) {
  std::string escaped;
  bool lineStart = true;
  for (const char c : text) {
    if (lineStart && (c == '.' || c == '\''))
      escaped += "\\&";
    if (c == '\\')
      escaped += "\\e";
    else
      escaped += c;
    lineStart = c == '\n';
  }
  return escaped;
}

std::string manPage(const CLI::App& app) {
  std::ostringstream out;
  out << ".TH ODLEX 1\n.SH NAME\nodlex \\- open, edit, check and save Windows Installer databases\n"
      << ".SH SYNOPSIS\n.B odlex\n[NOUN] VERB PACKAGE [ARGUMENTS] [OPTIONS]\n"
      << ".SH DESCRIPTION\n.nf\n"
      << roff(helpOf(app)) << ".fi\n.SH COMMANDS\n";
  for (const Described& described : commandsOf(app))
    out << ".SS odlex " << described.words << "\n.nf\n"
        << roff(helpOf(*described.command)) << ".fi\n";
  return out.str();
}

// Option spellings of `command` and of its option groups, each after a space: --long and -s
// names, the help option left to the caller.
std::string optionsOf(const CLI::App& command) {
  std::string names;
  for (const CLI::Option* option : command.get_options({})) {
    for (const std::string& name : option->get_lnames())
      names += (name == "help" ? "" : " --" + name);
    for (const std::string& name : option->get_snames())
      names += (name == "h" ? "" : " -" + name);
  }
  for (const CLI::App* group :
       command.get_subcommands([](const CLI::App* below) { return isOptionGroup(*below); }))
    names += optionsOf(*group);
  return names;
}

std::string namesBelow(const CLI::App& command) {
  std::string names;
  for (const CLI::App* below : command.get_subcommands({}))
    if (!isOptionGroup(*below))
      names += (names.empty() ? "" : " ") + below->get_name();
  return names;
}

std::string bashCompletion(const CLI::App& app) {
  std::ostringstream commands, options;
  commands << "    \"\") echo \"" << namesBelow(app) << "\" ;;\n";
  for (const Described& described : commandsOf(app)) {
    if (const std::string below = namesBelow(*described.command); !below.empty())
      commands << "    \"" << described.words << "\") echo \"" << below << "\" ;;\n";
    options << "    \"" << described.words << "\") echo \""
            << "--help" << optionsOf(*described.command) << "\" ;;\n";
  }
  std::ostringstream out;
  out << "# bash completion for odlex, made by `odlex completion bash`.\n"
      << "_odlex_commands() {\n  case \"$1\" in\n"
      << commands.str() << "  esac\n}\n"
      << "_odlex_options() {\n  case \"$1\" in\n"
      << options.str() << "  esac\n}\n"
      << R"bash(_odlex() {
  local cur="${COMP_WORDS[COMP_CWORD]}" path="" word i
  for ((i = 1; i < COMP_CWORD; i++)); do
    word="${COMP_WORDS[i]}"
    [[ " $(_odlex_commands "$path") " == *" $word "* ]] && path="${path:+$path }$word"
  done
  if [[ "$cur" == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$(_odlex_options "$path")" -- "$cur")
  else
    mapfile -t COMPREPLY < <(compgen -W "$(_odlex_commands "$path")" -- "$cur"; compgen -f -- "$cur")
  fi
}
complete -o filenames -F _odlex odlex
)bash";
  return out.str();
}

}  // namespace

void addManualCommands(Commands& commands, const CLI::App& app) {
  auto format = std::make_shared<std::string>("markdown");
  CLI::App& manual =
      commands.add("manual", "print the manual of every command, as Markdown or as a man page",
                   "odlex manual --format man > odlex.1", [&app, format] {
                     printLine(*format == "man" ? manPage(app) : markdown(app));
                     return 0;
                   });
  manual.add_option("--format", *format, "markdown (the default) or man")
      ->check(CLI::IsMember({"markdown", "man"}));
  auto shell = std::make_shared<std::string>();
  CLI::App& completion = commands.add(
      "completion", "print the shell's completion of odlex's commands and options",
      "odlex completion bash > ~/.local/share/bash-completion/completions/odlex", [&app, shell] {
        printLine(bashCompletion(app));
        return 0;
      });
  completion.add_option("SHELL", *shell, "bash")->required()->check(CLI::IsMember({"bash"}));
}

}  // namespace odlex::cli
