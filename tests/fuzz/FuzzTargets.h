#pragma once

#include <cstdint>
#include <span>

namespace pagestack {

/// Whatever bytes a fuzzer comes up with.
using FuzzInput = std::span<const std::uint8_t>;

// Each target hands the bytes to one part of the program as a hostile user would and checks what
// that part promises. It throws BrokenPromise, or lets an exception through that the part must not
// throw, when a promise does not hold; a crash, a hang and a finding of a sanitizer speak for
// themselves. It leaves nothing behind. One thread at a time; needs no application object.

/// Opens the bytes as a file, as one of the file list too, and reads the tags of its pages.
void openFile(FuzzInput input);

/// Decodes the pages of a file in bands, each twice.
void decodePages(FuzzInput input);

/// The first three bytes say how to write, the others are the file whose pages are written:
/// the format (0..4 as in OutputType, 5 for all pages in one TIFF file, 6 for the same with
/// pieces that were encoded ahead), the compression and the JPEG quality.
void writePages(FuzzInput input);

/// Reads the bytes as a text that lists paths.
void parsePaths(FuzzInput input);

/// The first byte says what the others are: the file of the settings, a keyed record, or the types
/// and values of a dictionary.
void readSettings(FuzzInput input);

} // namespace pagestack
