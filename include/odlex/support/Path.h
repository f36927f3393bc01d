#pragma once
// File-path helpers. Both '\' and '/' count as separators, so host paths of either platform
// split alike. Conversion to and from std::filesystem::path uses UTF-8 and changes no
// separator (a Linux file name may contain '\').

#include <filesystem>

#include "odlex/support/TalString.h"

namespace odlex::path {

bool IsSeparator(char16_t c);
// Position of the last separator, or RW_NPOS.
std::size_t LastSeparator(const RWWString& path);
// The text before the last separator (empty when there is none). "dir\file" -> "dir".
TalString Directory(const RWWString& path);
// The text after the last separator (all of it when there is none).
TalString FileName(const RWWString& path);
// The file name's text after its last '.', without the dot; empty when it has none.
TalString Extension(const RWWString& path);
// `directory` and `name` with one separator between them: '\' when `directory` uses only
// backslashes, else '/'. An empty part gives the other unchanged.
TalString Join(const RWWString& directory, const RWWString& name);

std::filesystem::path ToFilesystem(const RWWString& path);
// Bytes that are not UTF-8 become U+FFFD.
TalString FromFilesystem(const std::filesystem::path& path);

}  // namespace odlex::path
