#pragma once

struct tiff;

namespace pagestack {

/// Copies what describes a page as a document and a photograph, from the current page of `from` to
/// the page that `to` writes: names, texts, dates, position, resolution, ICC profile, XMP, IPTC and
/// the colorimetry of its samples.
void copyDescriptiveTags(tiff* from, tiff* to);

/// True for tags that are texts and are copied.
bool isCopiedText(unsigned tag);

/// Copies what says how the samples are to be understood: colour map, extra samples, sample format,
/// ink set, range of values; and of YCbCr pages coefficients, positioning and sub-sampling.
void copyInterpretationTags(tiff* from, tiff* to);

} // namespace pagestack
