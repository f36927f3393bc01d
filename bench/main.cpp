// Compares the odlex engine with libmsi on generated packages of growing size. Each operation
// runs on both sides in the same run, on the same file: reading every row of every table,
// rewriting the package to a new file, deleting 1% of the components with their rows, adding
// 1,000 components with a file each, exporting every table to .idt files, and replacing a text
// across every table, each then saved; odlex through its class library, libmsi by SQL. libmsi
// cannot apply transforms, so applying one is measured against odlex's own rewrite of the same
// package. Times are medians; odlex's peak memory is measured for each operation.
//
//   odlex_bench [--cache DIR] [--sizes 0,1000,10000,100000] [--reps N]
//
// Peak memory is measured in a fresh process (the program runs itself with --peak-of OP FILES),
// since a forked child would start from the peak the libmsi runs left in this one.

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "LibmsiPeer.h"
#include "NewComponents.h"
#include "OdlexSubject.h"
#include "PackageGenerator.h"
#include "PeakMemory.h"
#include "Process.h"
#include "Timing.h"

namespace odlex::bench {
namespace {

namespace fs = std::filesystem;

// Targets the results are checked against (reported, never enforced).
constexpr double kPeakPerFileSizeTarget = 3;
// One component in this many is deleted.
constexpr std::size_t kDeletedEvery = 100;
constexpr std::size_t kAddedComponents = 1000;
// A condition every seventeenth component of the generated packages carries, and what the
// search and replace makes of it (longer, so a replacement changes the text totals).
constexpr char kSearchedText[] = "VersionNT >= 601";
constexpr char kReplacementText[] = "(VersionNT >= 602)";

struct Options {
  fs::path self;  // this program, to measure peak memory in a fresh process
  fs::path cacheDir = "bench-packages";
  // The package without files shows the fixed costs included in every other row.
  std::vector<std::size_t> sizes = {0, 1000, 10000, 100000};
  int repetitions = 3;
  // Set by --peak-of: the operation and size whose peak memory to measure and write.
  std::optional<std::size_t> peakOperation;
  std::size_t peakFiles = 0;
};

// The packages and inputs of one size.
struct Workload {
  std::size_t files = 0;
  fs::path plain;  // files, components and features
  fs::path model;  // the same with a registry value per component and a shortcut per ten
  fs::path scratch;
  std::vector<std::string> deleted;
  NewComponents added;
  fs::path transform;  // from `model` to `edited`
  fs::path edited;
};

using Run = std::function<void(Workload&, const fs::path& out)>;
using Check =
    std::function<void(Workload&, const fs::path& referenceOut, const fs::path& odlexOut)>;

struct Operation {
  const char* title;
  const char* reference;  // what the odlex time is compared with
  double target;          // the ratio aimed at
  bool onModel;           // works on the model package (else the plain one)
  Run referenceRun;
  Run odlexRun;
  Check check;
};

struct Measurement {
  std::uint64_t fileBytes = 0;
  std::optional<double> referenceMs;
  std::optional<double> odlexMs;
  std::optional<std::uint64_t> odlexPeakBytes;
};

struct SizeResult {
  std::size_t files = 0;
  std::vector<Measurement> byOperation;
  std::vector<std::string> problems;
};

Options parseOptions(int argc, char** argv) {
  Options options;
  options.self = fs::read_symlink("/proc/self/exe");
  for (int i = 1; i + 1 < argc; i += 2) {
    const std::string name = argv[i];
    const std::string value = argv[i + 1];
    if (name == "--peak-of" && i + 2 < argc) {
      options.peakOperation = std::stoul(value);
      options.peakFiles = std::stoul(argv[i + 2]);
      ++i;
    } else if (name == "--cache") {
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

std::string numbered(const char* format, std::size_t n) {
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, format, n);
  return buffer;
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

void sameContents(const fs::path& a, const fs::path& b) {
  if (!(libmsi_peer::readAll(a) == libmsi_peer::readAll(b))) {
    throw std::runtime_error("libmsi reads different contents from " + a.string() + " and " +
                             b.string());
  }
}

// The packages and inputs of `files` files; the transform is made only `withTransform` (a
// process measuring peak memory finds it made).
Workload prepare(const Options& options, std::size_t files, bool withTransform) {
  Workload work;
  work.files = files;
  work.plain = ensurePackage(options.cacheDir, files);
  work.model = ensurePackage(options.cacheDir, files, PackageContents::kWithRegistryAndShortcuts);
  work.scratch = options.cacheDir / numbered("scratch-%zu", files);
  fs::create_directories(work.scratch);
  for (std::size_t i = 0; i < files; i += kDeletedEvery) {
    work.deleted.push_back(numbered("cmp%05zu", i));
  }
  work.added.directory = "INSTALLDIR";
  work.added.feature = "feat000";
  for (std::size_t i = 0; i < kAddedComponents; ++i) {
    NewComponent item;
    item.guid = numbered("{6A1F0000-0000-4000-8000-%012zX}", i);
    item.file = numbered("newfile%04zu", i);
    item.fileName = numbered("NEW%04zu~1.DAT|", i) + numbered("newfile%04zu.dat", i);
    item.fileSize = static_cast<std::int32_t>(1000 + i);
    // The class library's File row holds a 16-bit sequence number.
    item.sequence = static_cast<std::int32_t>(1 + i);
    work.added.items.push_back(item);
  }
  work.transform = work.scratch / "edit.mst";
  work.edited = work.scratch / "edited.msi";
  if (withTransform) {
    std::fprintf(stderr, "[%zu files] preparing the packages\n", files);
    fs::remove(work.transform);
    fs::remove(work.edited);
    odlex_subject::makeTransform(work.model, work.edited, work.deleted, work.transform);
  }
  return work;
}

// A directory emptied for an export.
void freshDirectory(const fs::path& directory) {
  fs::remove_all(directory);
  fs::create_directories(directory);
}

std::vector<Operation> operations() {
  return {
      {"Open and read every table", "libmsi", 10, false,
       [](Workload& w, const fs::path&) { libmsi_peer::readAll(w.plain); },
       [](Workload& w, const fs::path&) { odlex_subject::readAll(w.plain); },
       [](Workload& w, const fs::path&, const fs::path&) {
         if (!(odlex_subject::readAll(w.plain) == libmsi_peer::readAll(w.plain))) {
           throw std::runtime_error("odlex reads different contents than libmsi");
         }
       }},
      {"Rewrite the package to a new file", "libmsi", 5, false,
       [](Workload& w, const fs::path& out) { libmsi_peer::rewrite(w.plain, out); },
       [](Workload& w, const fs::path& out) { odlex_subject::rewrite(w.plain, out); },
       [](Workload& w, const fs::path& referenceOut, const fs::path& odlexOut) {
         sameContents(w.plain, referenceOut);
         sameContents(w.plain, odlexOut);
       }},
      {"Delete 1% of the components with their rows, and save", "libmsi", 20, true,
       [](Workload& w, const fs::path& out) {
         libmsi_peer::deleteComponents(w.model, out, w.deleted);
       },
       [](Workload& w, const fs::path& out) {
         odlex_subject::deleteComponents(w.model, out, w.deleted);
       },
       [](Workload& w, const fs::path& referenceOut, const fs::path& odlexOut) {
         // Nothing to delete: odlex leaves an unchanged package unwritten.
         if (w.files > 0) {
           sameContents(referenceOut, odlexOut);
         }
       }},
      {"Add 1,000 components with a file each, and save", "libmsi", 10, true,
       [](Workload& w, const fs::path& out) { libmsi_peer::addComponents(w.model, out, w.added); },
       [](Workload& w, const fs::path& out) {
         odlex_subject::addComponents(w.model, out, w.added);
       },
       [](Workload&, const fs::path& referenceOut, const fs::path& odlexOut) {
         sameContents(referenceOut, odlexOut);
       }},
      {"Export every table to .idt files", "libmsi", 10, true,
       [](Workload& w, const fs::path& out) {
         freshDirectory(out);
         libmsi_peer::exportAll(w.model, out);
       },
       [](Workload& w, const fs::path& out) {
         freshDirectory(out);
         odlex_subject::exportAll(w.model, out);
       },
       [](Workload&, const fs::path& referenceOut, const fs::path& odlexOut) {
         for (const fs::directory_entry& file : fs::directory_iterator(referenceOut)) {
           if (!fs::exists(odlexOut / file.path().filename())) {
             throw std::runtime_error("odlex did not export " + file.path().filename().string());
           }
         }
       }},
      {"Replace a text across every table, and save", "libmsi", 10, true,
       [](Workload& w, const fs::path& out) {
         libmsi_peer::searchAndReplace(w.model, out, kSearchedText, kReplacementText);
       },
       [](Workload& w, const fs::path& out) {
         odlex_subject::searchAndReplace(w.model, out, kSearchedText, kReplacementText);
       },
       [](Workload& w, const fs::path& referenceOut, const fs::path& odlexOut) {
         // Nothing matches without components: odlex leaves an unchanged package unwritten.
         if (w.files == 0) {
           return;
         }
         sameContents(referenceOut, odlexOut);
         if (libmsi_peer::readAll(odlexOut) == libmsi_peer::readAll(w.model)) {
           throw std::runtime_error("nothing was replaced");
         }
       }},
      {"Apply a transform, and save", "odlex rewrite", 0.5, true,
       [](Workload& w, const fs::path& out) { odlex_subject::rewrite(w.model, out); },
       [](Workload& w, const fs::path& out) {
         odlex_subject::applyTransform(w.model, out, w.transform);
       },
       [](Workload& w, const fs::path&, const fs::path& odlexOut) {
         sameContents(w.edited, odlexOut);
       }},
  };
}

void measureOperation(const Options& options, const Operation& operation, Workload& work,
                      std::size_t index, SizeResult& result) {
  Measurement& m = result.byOperation[index];
  m.fileBytes = fs::file_size(operation.onModel ? work.model : work.plain);
  std::fprintf(stderr, "[%zu files] %s\n", work.files, operation.title);
  const fs::path referenceOut = work.scratch / numbered("op%zu-reference.out", index);
  const fs::path odlexOut = work.scratch / numbered("op%zu-odlex.out", index);
  const std::string name = operation.title;
  // odlex first: the add operation's libmsi side inserts the keys odlex's table made.
  m.odlexMs = medianTime(result, "odlex: " + name, options.repetitions, [&] {
    fs::remove_all(odlexOut);
    operation.odlexRun(work, odlexOut);
  });
  m.referenceMs = medianTime(result, operation.reference + (": " + name), options.repetitions, [&] {
    fs::remove_all(referenceOut);
    operation.referenceRun(work, referenceOut);
  });
  if (m.odlexMs && m.referenceMs) {
    attempt(result, "check: " + name, [&] { operation.check(work, referenceOut, odlexOut); });
  }
  const fs::path peakFile = work.scratch / numbered("op%zu-peak.bytes", index);
  fs::remove(peakFile);
  attempt(result, "odlex peak memory: " + name, [&] {
    if (runProgram({options.self.string(), "--cache", options.cacheDir.string(), "--peak-of",
                    std::to_string(index), std::to_string(work.files)}) != 0) {
      throw std::runtime_error("the measuring process failed");
    }
    std::ifstream in(peakFile);
    std::uint64_t bytes = 0;
    if (!(in >> bytes)) {
      throw std::runtime_error("no figure in " + peakFile.string());
    }
    m.odlexPeakBytes = bytes;
  });
}

// In a fresh process: the peak memory odlex's side of operation `index` takes on `files` files,
// after the same work on the package without files, so that what is measured is the memory the
// data takes, not the code and converter tables every run faults in once. Written to the
// scratch directory for the measuring run to read.
int measurePeak(const Options& options, std::size_t index, std::size_t files) {
  const std::vector<Operation> ops = operations();
  if (index >= ops.size()) {
    return 2;
  }
  Workload empty = prepare(options, 0, false);
  Workload work = prepare(options, files, false);
  const fs::path warmOut = empty.scratch / numbered("op%zu-warm.out", index);
  const fs::path peakOut = work.scratch / numbered("op%zu-peak.out", index);
  const std::uint64_t bytes = peakMemoryGrowth(
      [&] {
        fs::remove_all(warmOut);
        ops[index].odlexRun(empty, warmOut);
      },
      [&] {
        fs::remove_all(peakOut);
        ops[index].odlexRun(work, peakOut);
      });
  std::ofstream(work.scratch / numbered("op%zu-peak.bytes", index)) << bytes << "\n";
  return 0;
}

std::string milliseconds(const std::optional<double>& ms) {
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, ms ? "%.1f" : "-", ms.value_or(0));
  return buffer;
}

// "12.3x" for the reference time over odlex's, marked with '!' below `target`.
std::string ratio(const Measurement& m, double target) {
  if (!m.referenceMs || !m.odlexMs || *m.odlexMs <= 0) {
    return "-";
  }
  const double value = *m.referenceMs / *m.odlexMs;
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%.2fx%s", value, value < target ? "!" : "");
  return buffer;
}

std::string peakPerFile(const Measurement& m) {
  if (!m.odlexPeakBytes || m.fileBytes == 0) {
    return "-";
  }
  const double value = static_cast<double>(*m.odlexPeakBytes) / m.fileBytes;
  char buffer[48];
  std::snprintf(buffer, sizeof buffer, "%7.1f MiB = %5.2fx%s", *m.odlexPeakBytes / 1048576.0, value,
                value > kPeakPerFileSizeTarget ? "!" : "");
  return buffer;
}

void printTables(const std::vector<Operation>& ops, const std::vector<SizeResult>& results) {
  for (std::size_t op = 0; op < ops.size(); ++op) {
    std::printf("\n%s (reference: %s; target ratio >= %.1fx)\n", ops[op].title, ops[op].reference,
                ops[op].target);
    std::printf("%8s %9s | %13s %9s %9s | %s\n", "files", "file MiB", "reference ms", "odlex ms",
                "ratio", "odlex peak memory / file size");
    for (const SizeResult& r : results) {
      const Measurement& m = r.byOperation[op];
      std::printf("%8zu %9.2f | %13s %9s %9s | %s\n", r.files, m.fileBytes / 1048576.0,
                  milliseconds(m.referenceMs).c_str(), milliseconds(m.odlexMs).c_str(),
                  ratio(m, ops[op].target).c_str(), peakPerFile(m).c_str());
    }
  }
  std::printf(
      "\nTimes are medians in ms; ratio = reference time / odlex time; '!' marks a missed target\n"
      "(peak memory: <= %.0fx the file size). libmsi cannot apply transforms (the tables it\n"
      "makes of one come out under mangled names), so applying one is compared with odlex's own\n"
      "rewrite of the same package: a ratio of 0.5 means applying and saving takes twice as long\n"
      "as a plain rewrite. Peak memory is measured in a fresh process after the same work on the\n"
      "0-file package, so it counts the data, not the code and tables every run faults in once.\n",
      kPeakPerFileSizeTarget);
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
    if (options.peakOperation) {
      return measurePeak(options, *options.peakOperation, options.peakFiles);
    }
    std::filesystem::create_directories(options.cacheDir);
    const std::vector<Operation> ops = operations();
    Workload empty = prepare(options, 0, true);
    std::vector<SizeResult> results;
    bool clean = true;
    for (std::size_t files : options.sizes) {
      Workload work = files == 0 ? empty : prepare(options, files, true);
      SizeResult result;
      result.files = files;
      result.byOperation.resize(ops.size());
      for (std::size_t op = 0; op < ops.size(); ++op) {
        measureOperation(options, ops[op], work, op, result);
      }
      clean = clean && result.problems.empty();
      results.push_back(std::move(result));
    }
    printTables(ops, results);
    return clean ? 0 : 1;
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "odlex_bench: %s\n", failure.what());
    return 2;
  }
}
