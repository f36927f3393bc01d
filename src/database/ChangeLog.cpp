// The change log: a row in the package's ZrChangeLog table for each table written.

#include "odlex/database/ODLEXDatabase.h"

// Change-log texts are formatted from the message catalog named by SetResources. No catalog is
// ever loaded yet (SetResources only records its path), and without one nothing is recorded.
void ODLEXDatabase::UpdateChangeLog(unsigned long, const std::vector<std::u16string>&,
                                    const TalString&) {}
