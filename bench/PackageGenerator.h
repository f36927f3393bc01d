#pragma once
// Makes the benchmark packages: a product with `fileCount` File rows and the Component,
// Directory, Feature, FeatureComponents, Media and Property rows that go with them, written
// as .idt files and turned into a package by msibuild. Packages are cached by size.

#include <cstddef>
#include <filesystem>

namespace odlex::bench {

// Returns the path of the package with `fileCount` files under `cacheDir`, building it first
// when it is not there yet. Throws std::runtime_error when msibuild fails.
std::filesystem::path ensurePackage(const std::filesystem::path& cacheDir, std::size_t fileCount);

}  // namespace odlex::bench
