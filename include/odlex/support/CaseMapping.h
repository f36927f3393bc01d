#pragma once
// Simple (one code unit to one code unit) Unicode case mapping for the Basic Multilingual
// Plane: ASCII, Latin-1, Latin Extended-A, Latin Extended Additional, Greek, Cyrillic,
// Armenian, Roman numerals and the full-width Latin letters. Code units outside those blocks,
// surrogates included, map to themselves.

namespace odlex {

char16_t ToUpperChar(char16_t c);
char16_t ToLowerChar(char16_t c);

// Simple case folding, the mapping used for case-insensitive comparison and hashing: two
// strings are equal ignoring case when their folded code units are equal. Differs from
// lower-casing for the dotted/dotless i pair, which folds to itself.
char16_t FoldCaseChar(char16_t c);

}  // namespace odlex
