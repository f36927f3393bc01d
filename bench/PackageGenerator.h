#pragma once
// Makes the benchmark packages: a product with `fileCount` File rows, each in a component of
// its own, and the Directory, Feature, FeatureComponents, Media and Property rows that go
// with them, written as .idt files and turned into a package by msibuild. Packages are cached
// by size and contents.

#include <cstddef>
#include <filesystem>

namespace odlex::bench {

enum class PackageContents {
  kFiles,
  // Also a Registry value for every component and a Shortcut for every tenth.
  kWithRegistryAndShortcuts,
};

// Returns the path of the package with `fileCount` files under `cacheDir`, building it first
// when it is not there yet. Throws std::runtime_error when msibuild fails.
std::filesystem::path ensurePackage(const std::filesystem::path& cacheDir, std::size_t fileCount,
                                    PackageContents contents = PackageContents::kFiles);

}  // namespace odlex::bench
