#include "msi/idt/FieldText.h"
#include "msi/idt/IdtLines.h"
#include "msi/idt/PseudoTables.h"
#include "storage/CodePage.h"

namespace odlex::idt {

std::string forceCodepageText(std::uint32_t codePage) {
  return "\r\n\r\n" + std::to_string(codePage) + "\t_ForceCodepage\r\n";
}

std::uint32_t importForceCodepage(engine::Database& db, std::string_view number,
                                  const std::filesystem::path& file, engine::Error& error) {
  std::uint32_t codePage = 0;
  if (!parseSmallDecimal(number, codePage) ||
      (codePage != 0 && !storage::isSupportedCodePage(codePage))) {
    error = {engine::kFunctionFailed, positionPrefix(file, 3) + "field 1: unsupported code page '" +
                                          std::string(number.substr(0, 16)) + "'"};
    return error.code;
  }
  db.setCodePage(codePage);
  return engine::kSuccess;
}

}  // namespace odlex::idt
