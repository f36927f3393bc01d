// Compares the odlex engine with libmsi on generated packages of growing size: reading every
// row of every table, rewriting the package to a new file, odlex's peak memory while reading,
// and deleting 1% of the components (with their files, registry values and shortcuts) and
// saving, which odlex does through its class library and libmsi by SQL. Both libraries work on
// the same file in the same run; times are medians.
//
//   odlex_bench [--cache DIR] [--sizes 0,1000,10000,100000] [--reps N]

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "LibmsiPeer.h"
#include "OdlexSubject.h"
#include "PackageGenerator.h"
#include "PeakMemory.h"
#include "Timing.h"

namespace odlex::bench {
namespace {

// Targets the results are checked against (reported, never enforced).
constexpr double kReadSpeedupTarget = 10;
constexpr double kRewriteSpeedupTarget = 5;
constexpr double kPeakPerFileSizeTarget = 3;
constexpr double kDeleteSpeedupTarget = 20;
// One component in this many is deleted.
constexpr std::size_t kDeletedEvery = 100;

struct Options {
  std::filesystem::path cacheDir = "bench-packages";
  // The package without files shows the fixed costs included in every other row.
  std::vector<std::size_t> sizes = {0, 1000, 10000, 100000};
  int repetitions = 3;
};

struct Comparison {
  std::optional<double> libmsiMs;
  std::optional<double> odlexMs;
};

struct SizeResult {
  std::size_t files = 0;
  std::uint64_t fileBytes = 0;
  Comparison read;
  Comparison rewrite;
  Comparison deletion;
  std::optional<std::uint64_t> odlexPeakBytes;
  std::vector<std::string> problems;
};

Options parseOptions(int argc, char** argv) {
  Options options;
  for (int i = 1; i + 1 < argc; i += 2) {
    const std::string name = argv[i];
    const std::string value = argv[i + 1];
    if (name == "--cache") {
      options.cacheDir = value;
    } else if (name == "--reps") {
      options.repetitions = std::max(1, std::atoi(value.c_str()));
    } else if (name == "--sizes") {
      options.sizes.clear();
      for (std::size_t start = 0; start < value.size();) {
        const std::size_t comma = std::min(value.find(',', start), value.size());
        options.sizes.push_back(std::stoul(value.substr(start, comma - start)));
        start = comma + 1;
      }
    } else {
      throw std::invalid_argument("unknown option " + name);
    }
  }
  return options;
}

// Runs `work`, turning a failure into a problem of `result`; false when it failed.
bool attempt(SizeResult& result, const std::string& what, const std::function<void()>& work) {
  try {
    work();
    return true;
  } catch (const std::exception& failure) {
    result.problems.push_back(what + ": " + failure.what());
    return false;
  }
}

// Times `work` `repetitions` times; empty when any run failed.
std::optional<double> medianTime(SizeResult& result, const std::string& what, int repetitions,
                                 const std::function<void()>& work) {
  std::vector<double> samples;
  for (int rep = 0; rep < repetitions; ++rep) {
    if (!attempt(result, what, [&] { samples.push_back(millisecondsOf(work)); })) {
      return std::nullopt;
    }
  }
  return median(samples);
}

// A rewritten copy must hold what the original held, read back by libmsi.
void checkCopy(SizeResult& result, const std::string& writer, const std::filesystem::path& copy,
               const ReadTotals& expected) {
  attempt(result, "read back the " + writer + " copy", [&] {
    if (!(libmsi_peer::readAll(copy) == expected)) {
      throw std::runtime_error("libmsi reads different contents from " + copy.string());
    }
  });
}

// Deletes every hundredth component of the package with registry values and shortcuts; both
// results must read the same.
void measureDeletion(const Options& options, SizeResult& result) {
  const std::size_t files = result.files;
  if (files == 0) {
    return;  // no component to delete
  }
  std::fprintf(stderr, "[%zu files] delete 1%% of the components\n", files);
  const std::filesystem::path model =
      ensurePackage(options.cacheDir, files, PackageContents::kWithRegistryAndShortcuts);
  std::vector<std::string> components;
  for (std::size_t i = 0; i < files; i += kDeletedEvery) {
    char name[32];
    std::snprintf(name, sizeof name, "cmp%05zu", i);
    components.emplace_back(name);
  }
  const std::filesystem::path libmsiOut = model.string() + ".libmsi-deleted.msi";
  const std::filesystem::path odlexOut = model.string() + ".odlex-deleted.msi";
  result.deletion.libmsiMs = medianTime(result, "libmsi delete", options.repetitions, [&] {
    std::filesystem::remove(libmsiOut);
    libmsi_peer::deleteComponents(model, libmsiOut, components);
  });
  result.deletion.odlexMs = medianTime(result, "odlex delete", options.repetitions, [&] {
    std::filesystem::remove(odlexOut);
    odlex_subject::deleteComponents(model, odlexOut, components);
  });
  if (result.deletion.libmsiMs && result.deletion.odlexMs) {
    attempt(result, "compare the deletions", [&] {
      if (!(libmsi_peer::readAll(libmsiOut) == libmsi_peer::readAll(odlexOut))) {
        throw std::runtime_error("the two packages after deleting differ");
      }
    });
  }
}

SizeResult measure(const Options& options, std::size_t files) {
  SizeResult result;
  result.files = files;
  std::fprintf(stderr, "[%zu files] preparing the package\n", files);
  const std::filesystem::path package = ensurePackage(options.cacheDir, files);
  result.fileBytes = std::filesystem::file_size(package);

  // First, while this process is still small, so the child inherits little.
  std::fprintf(stderr, "[%zu files] odlex peak memory\n", files);
  attempt(result, "odlex peak memory", [&] {
    const std::filesystem::path empty = ensurePackage(options.cacheDir, 0);
    result.odlexPeakBytes = peakMemoryGrowth([&] { odlex_subject::readAll(empty); },
                                             [&] { odlex_subject::readAll(package); });
  });

  const ReadTotals expected = libmsi_peer::readAll(package);
  attempt(result, "odlex read", [&] {
    if (!(odlex_subject::readAll(package) == expected)) {
      throw std::runtime_error("odlex reads different contents than libmsi");
    }
  });

  std::fprintf(stderr, "[%zu files] read\n", files);
  const int reps = options.repetitions;
  result.read.libmsiMs =
      medianTime(result, "libmsi read", reps, [&] { libmsi_peer::readAll(package); });
  result.read.odlexMs =
      medianTime(result, "odlex read", reps, [&] { odlex_subject::readAll(package); });

  std::fprintf(stderr, "[%zu files] rewrite\n", files);
  const std::filesystem::path libmsiCopy = package.string() + ".libmsi-copy.msi";
  const std::filesystem::path odlexCopy = package.string() + ".odlex-copy.msi";
  result.rewrite.libmsiMs = medianTime(result, "libmsi rewrite", reps, [&] {
    std::filesystem::remove(libmsiCopy);
    libmsi_peer::rewrite(package, libmsiCopy);
  });
  result.rewrite.odlexMs = medianTime(result, "odlex rewrite", reps, [&] {
    std::filesystem::remove(odlexCopy);
    odlex_subject::rewrite(package, odlexCopy);
  });
  if (result.rewrite.libmsiMs) {
    checkCopy(result, "libmsi", libmsiCopy, expected);
  }
  if (result.rewrite.odlexMs) {
    checkCopy(result, "odlex", odlexCopy, expected);
  }
  measureDeletion(options, result);
  return result;
}

std::string milliseconds(const std::optional<double>& ms) {
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, ms ? "%.1f" : "-", ms.value_or(0));
  return buffer;
}

// "12.3x" for libmsi time over odlex time, marked with '!' below `target`.
std::string speedup(const Comparison& comparison, double target) {
  if (!comparison.libmsiMs || !comparison.odlexMs || *comparison.odlexMs <= 0) {
    return "-";
  }
  const double ratio = *comparison.libmsiMs / *comparison.odlexMs;
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%.1fx%s", ratio, ratio < target ? "!" : "");
  return buffer;
}

std::string peakPerFile(const SizeResult& result) {
  if (!result.odlexPeakBytes || result.fileBytes == 0) {
    return "-";
  }
  const double ratio = static_cast<double>(*result.odlexPeakBytes) / result.fileBytes;
  char buffer[48];
  std::snprintf(buffer, sizeof buffer, "%.1f MiB = %.2fx%s", *result.odlexPeakBytes / 1048576.0,
                ratio, ratio > kPeakPerFileSizeTarget ? "!" : "");
  return buffer;
}

void printTable(const std::vector<SizeResult>& results) {
  std::printf("\n%8s %9s | %11s %9s %8s | %11s %9s %8s | %11s %9s %8s | %s\n", "files", "file MiB",
              "read libmsi", "odlex", "ratio", "rewr libmsi", "odlex", "ratio", "del1% libmsi",
              "odlex", "ratio", "odlex peak memory / file size");
  for (const SizeResult& r : results) {
    std::printf("%8zu %9.2f | %11s %9s %8s | %11s %9s %8s | %11s %9s %8s | %s\n", r.files,
                r.fileBytes / 1048576.0, milliseconds(r.read.libmsiMs).c_str(),
                milliseconds(r.read.odlexMs).c_str(), speedup(r.read, kReadSpeedupTarget).c_str(),
                milliseconds(r.rewrite.libmsiMs).c_str(), milliseconds(r.rewrite.odlexMs).c_str(),
                speedup(r.rewrite, kRewriteSpeedupTarget).c_str(),
                milliseconds(r.deletion.libmsiMs).c_str(), milliseconds(r.deletion.odlexMs).c_str(),
                speedup(r.deletion, kDeleteSpeedupTarget).c_str(), peakPerFile(r).c_str());
  }
  std::printf(
      "\nTimes are medians in ms; ratio = libmsi time / odlex time. Targets: read >= %.0fx, "
      "rewrite >= %.0fx, delete 1%% >= %.0fx, peak memory <= %.0fx the file size; '!' marks a\n"
      "missed target. Delete 1%%: every hundredth component of the package with a registry value\n"
      "per component and a shortcut per ten, with its file, registry value and shortcut, then a\n"
      "save to a new file (libmsi: DELETE statements per table and component, then commit).\n"
      "Peak memory is measured after the same work on the 0-file package, so it counts the\n"
      "data, not the code and converter tables every run faults in once.\n",
      kReadSpeedupTarget, kRewriteSpeedupTarget, kDeleteSpeedupTarget, kPeakPerFileSizeTarget);
  for (const SizeResult& r : results) {
    for (const std::string& problem : r.problems) {
      std::printf("problem [%zu files]: %s\n", r.files, problem.c_str());
    }
  }
}

}  // namespace
}  // namespace odlex::bench

int main(int argc, char** argv) {
  using namespace odlex::bench;
  try {
    const Options options = parseOptions(argc, argv);
    std::filesystem::create_directories(options.cacheDir);
    std::vector<SizeResult> results;
    bool clean = true;
    for (std::size_t files : options.sizes) {
      results.push_back(measure(options, files));
      clean = clean && results.back().problems.empty();
    }
    printTable(results);
    return clean ? 0 : 1;
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "odlex_bench: %s\n", failure.what());
    return 2;
  }
}
