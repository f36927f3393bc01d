// Administrative installs through the installer's command-line program, started directly with
// an argument vector (never through a shell), so that any package path arrives as one argument.

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "odlex/database/ODLEXDatabase.h"
#include "odlex/support/RWWTokenizer.h"

extern char** environ;

namespace {

constexpr const char16_t* kDefaultInstaller = u"msiexec";

}  // namespace

TalString ODLEXDatabase::installerProgram = kDefaultInstaller;

void ODLEXDatabase::SetInstallerProgram(const TalString& program) {
  installerProgram = program.isNull() ? TalString(kDefaultInstaller) : program;
}

const TalString& ODLEXDatabase::GetInstallerProgram() {
  return installerProgram;
}

bool ODLEXDatabase::DoAdministrativeInstall(const char16_t* packagePath) {
  std::string program = installerProgram.ToUtf8();
  std::string quiet = "/qn";
  std::string administrative = "/a";
  std::string package = TalString(packagePath ? packagePath : u"").ToUtf8();
  char* argv[] = {program.data(), quiet.data(), administrative.data(), package.data(), nullptr};
  // What the installer prints goes to standard error, so that the host's standard output (a
  // JSON document, say) stays its own.
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, STDERR_FILENO, STDOUT_FILENO);
  pid_t child = 0;
  const int started = posix_spawnp(&child, program.c_str(), &actions, nullptr, argv, environ);
  posix_spawn_file_actions_destroy(&actions);
  if (started != 0)
    return false;
  // The installer's exit status is not looked at: a run that ended counts as done.
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  return true;
}

bool ODLEXDatabase::DoAdministrativeInstall(const TalString& packagePaths) {
  RWWTokenizer next(packagePaths);
  bool all = true;
  for (TalString package = next(u";"); !package.isNull(); package = next(u";"))
    all = DoAdministrativeInstall(package.u16().c_str()) && all;
  return all;
}
