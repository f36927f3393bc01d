#pragma once
// The two pseudo-tables of .idt files: _ForceCodepage (the database's code page) and
// _SummaryInformation (the summary information stream as rows).

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "msi/engine/Database.h"
#include "msi/engine/Result.h"
#include "msi/idt/Idt.h"
#include "msi/idt/IdtHeader.h"
#include "msi/idt/IdtLines.h"

namespace odlex::idt {

// The text of _ForceCodepage.idt.
std::string forceCodepageText(std::uint32_t codePage);
// Sets the database's code page from the number on line 3 of _ForceCodepage.idt.
std::uint32_t importForceCodepage(engine::Database& db, std::string_view number,
                                  const std::filesystem::path& file, engine::Error& error);

// The summary information as _SummaryInformation.idt (no rows when the database has none).
std::uint32_t exportSummary(const engine::Database& db, ExportedTable& out, engine::Error& error);
// Replaces the summary information with the rows read from `lines` (positioned after the
// header). `codePage` decodes them.
std::uint32_t importSummary(engine::Database& db, LineCursor& lines, std::uint32_t codePage,
                            const std::filesystem::path& file, engine::Error& error);

}  // namespace odlex::idt
