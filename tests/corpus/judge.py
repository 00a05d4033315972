"""What an output page owes to its source page. Every check appends (what, text) to a list."""
import numpy as np

from picture import (Canonical, as_rgb, as_stored, canonical, psnr, simplify, to_16_bits, to_8_bits)

JPEG_DECIBELS = 38.0
CMYK_DECIBELS = 12.0  # any sane RGB passes; an inverted one does not
REDUCED_DECIBELS = 25.0  # GIF of more than 256 colours, after blurring the diffusion away
COMPRESSION_TAGS = {"none": 1, "g3": 3, "g4": 4, "lzw": 5, "packbits": 32773}


class PageJudge:
    """Holds one source page against its outputs."""

    def __init__(self, expected, reference, profile):
        self.expected, self.reference, self.profile = expected, reference, profile
        self._twin = None

    # What the five formats are held to -------------------------------------------------------

    def png(self, picture):
        found = []
        self._size(found, picture, True)
        self._lossless(found, picture, 16, keeps_alpha=True)
        self._resolution_per_metre(found, picture)
        self._profile(found, picture)
        page, kind, depth = self.expected, picture.details["colour type"], picture.bits
        if page.bits == 1 and page.samples == 1 and depth != 1:
            found.append(("depth", f"1 bit became {depth}"))
        if page.bits == 16 and page.sample_format == "1" and not self._fits_8_bits() and depth != 16:
            found.append(("depth", f"16 bits became {depth}"))
        if self._is_gray() and kind not in (0, 4):
            found.append(("channels", f"gray became colour type {kind}"))
        if self._keeps_palette() and kind != 3 and not (self._looks_gray() and kind == 0):
            found.append(("channels", f"a palette became colour type {kind}"))
        return found

    def bmp(self, picture):
        found = []
        self._size(found, picture, True)
        self._lossless(found, picture, 8, keeps_alpha=False)
        self._resolution_per_metre(found, picture)
        page, bits = self.expected, picture.details["bits a pixel"]
        if page.bits == 1 and page.samples == 1 and bits != 1:
            found.append(("depth", f"1 bit became {bits}"))
        if (self._is_gray() or self._keeps_palette()) and bits > 8 and page.alpha == "none":
            found.append(("channels", f"one channel became {bits} bits a pixel"))
        return found

    def gif(self, picture):
        found = []
        self._size(found, picture, True)
        if found:
            return found
        shown = as_stored(picture.samples, self.expected.orientation)
        wanted = self._display_form()
        if wanted is None:
            return found
        colours, alpha = to_8_bits(as_rgb(wanted)), None
        if wanted.alpha:
            alpha = to_8_bits(wanted.array[:, :, -1])
        opaque = np.ones(shown.shape[:2], bool) if alpha is None else alpha == 255
        if alpha is not None:
            if shown.shape[2] == 4 and np.any(shown[:, :, 3][opaque] == 0):
                found.append(("alpha", "opaque pixels became transparent"))
            if np.any(alpha == 0) and (shown.shape[2] < 4 or np.any(shown[:, :, 3][alpha == 0])):
                found.append(("alpha", "transparent pixels became opaque"))
        if self.expected.form.startswith("CMYK"):
            if alpha is None or opaque.all():
                self._near(found, shown[:, :, :3], colours, CMYK_DECIBELS, blurred=True)
        elif alpha is not None and not opaque.all():
            _compare_steps(found, shown[:, :, :3][opaque], colours[opaque],
                           1 if _count_colours(colours[opaque]) < 200 else 255)
        elif self.reference.proved and not self.reference.tolerance and (
                _count_colours(colours) <= 256 and not self._is_deep()):
            _compare_steps(found, shown[:, :, :3], colours, 0)
        else:
            self._near(found, shown[:, :, :3], colours, REDUCED_DECIBELS, blurred=True)
        return found

    def jpeg(self, picture):
        found = []
        self._size(found, picture, True)
        if picture.details["frame"] != 0xC0:
            found.append(("frame", "not baseline"))
        components = picture.details["components"]
        if self._is_gray() and components != 1:
            found.append(("channels", f"gray became {components} components"))
        self._density(found, picture)
        self._profile(found, picture)
        if any(what == "size" for what, _ in found):
            return found
        wanted = self._display_form()
        if wanted is None:
            return found
        limit = JPEG_DECIBELS
        if self.expected.form.startswith("CMYK"):
            limit = CMYK_DECIBELS
        elif not self.reference.proved and self.reference.in_decibels:
            limit = min(limit, self.reference.tolerance)
        shown = as_stored(as_rgb(Canonical(picture.model, picture.samples)), self.expected.orientation)
        self._near(found, shown, to_8_bits(as_rgb(_over_white(wanted))), limit)
        return found

    def tiff(self, picture, compression):
        """A page of a TIFF file; most pages show the same as one that was judged before."""
        found = []
        if picture.orientation == self.expected.orientation:
            self._size(found, picture, False)
        elif picture.orientation == 1:
            found.append(("orientation", f"{self.expected.orientation} was not kept"))
            return found
        else:
            found.append(("orientation",
                          f"{self.expected.orientation} became {picture.orientation}"))
        if self._twin and picture.shows_the_same_as(self._twin[0]):
            found += self._twin[1]
        else:
            pixels = []
            self._lossless(pixels, picture, 16, keeps_alpha=True)
            self._twin = picture, pixels
            found += pixels
        self._tiff_resolution(found, picture)
        self._profile(found, picture)
        self._tiff_depth(found, picture)
        found += self.tiff_compression(picture, compression)
        return found

    def tiff_compression(self, picture, compression):
        wanted = COMPRESSION_TAGS[compression]
        if compression in ("g3", "g4") and not (picture.bits == 1 and picture.channels == 1):
            wanted = 1
        if picture.compression != wanted:
            return [("compression", f"tag {picture.compression} instead of {wanted}")]
        return []

    # What is known of the source -------------------------------------------------------------

    def _is_gray(self):
        page = self.expected
        if page.form.startswith("CMYK") or page.samples > 2:
            return False
        colours = page.samples - (0 if page.alpha == "none" else 1)
        return page.photometric in ("minisblack", "miniswhite") and colours == 1

    def _keeps_palette(self):
        page = self.expected
        return page.photometric == "palette" and page.bits <= 8 and page.samples == 1

    def _looks_gray(self):
        return self.expected.form.startswith("GRAY")

    def _fits_8_bits(self):
        return self.expected.form.endswith("8")

    def _is_deep(self):
        return self.expected.form.endswith("16")

    def _display_form(self):
        """The reference as a screen shows it: colours not multiplied by their alpha."""
        form, alpha = self.reference.form, self.reference.ink_alpha
        if form is not None and form.alpha == "associated":
            return _unmultiplied(form)
        if form is not None and alpha is not None:
            return Canonical("rgb", np.concatenate([as_rgb(form), alpha], axis=2), "unassociated")
        return form

    # Single checks ---------------------------------------------------------------------------

    def _size(self, found, picture, turned):
        wanted = (self.expected.width, self.expected.height)
        if turned and self.expected.orientation >= 5:
            wanted = wanted[::-1]
        if (picture.width, picture.height) != wanted:
            found.append(("size", f"{picture.width} x {picture.height} instead of "
                                  f"{wanted[0]} x {wanted[1]}"))

    def _lossless(self, found, picture, most_bits, keeps_alpha):
        """Compares all pixels; `picture` is upright except in TIFF."""
        if any(what == "size" for what, _ in found):
            return
        in_tiff = picture.compression is not None
        stored = self.reference.stored
        if in_tiff and stored is not None and picture.shows_the_same_as(stored):
            return
        form = canonical(picture)
        if form is None:
            found.append(("pixels", f"{picture.model} of {picture.bits} bits ({picture.sample_kind}) "
                                    "differs from the source's own samples"))
            return
        if not in_tiff:
            form = Canonical(form.model, as_stored(form.array, self.expected.orientation), form.alpha)
        wanted = self.reference.form
        if wanted is None:
            if self.expected.pixels.startswith("sha256:") and form.digest() != self.expected.pixels:
                found.append(("pixels", "the digest differs"))
            return
        if wanted.model == "cmyk":
            self._lossless_cmyk(found, form, wanted, in_tiff, keeps_alpha)
            return
        if wanted.alpha == "associated" and form.alpha == "unassociated":
            form, wanted = _multiplied(form), _clipped_to_alpha(wanted)
            wanted = _same_depth(wanted, form)
            _compare_forms(found, form, wanted, 1, False)
            return
        rounding = 0
        if wanted.alpha and not keeps_alpha:
            wanted, rounding = _over_white(self._display_form()), 1
        if most_bits == 8 and wanted.array.dtype.itemsize == 2:
            wanted = simplify(Canonical(wanted.model, to_8_bits(wanted.array), wanted.alpha))
            rounding = max(rounding, 1 if self.expected.bits < 16 else 0)
        in_decibels = self.reference.in_decibels
        if in_decibels and form.alpha and form.alpha == wanted.alpha == "unassociated":
            # What a lossy codec leaves under transparent pixels is nobody's picture.
            form, wanted = _multiplied(form), _multiplied(wanted)
        tolerance = self.reference.tolerance if in_decibels else max(self.reference.tolerance, rounding)
        _compare_forms(found, form, wanted, tolerance, in_decibels)

    def _lossless_cmyk(self, found, form, wanted, in_tiff, keeps_alpha):
        if form.model == "cmyk":
            _compare_forms(found, form, wanted, 1 if self.expected.pixels.startswith("near") else 0,
                           self.expected.is_lossy)
        elif in_tiff:
            found.append(("channels", f"CMYK became {form.form}"))
        else:
            wanted = wanted if keeps_alpha else _over_white(self._display_form())
            self._near(found, to_8_bits(as_rgb(form)), to_8_bits(as_rgb(wanted)), CMYK_DECIBELS)

    @staticmethod
    def _near(found, shown, wanted, limit, blurred=False):
        if blurred:
            shown, wanted = _blurred(shown), _blurred(wanted)
        decibels = psnr(shown, wanted, 255)
        if decibels < limit:
            found.append(("pixels", f"{decibels:.1f} dB, at least {limit:.0f} dB are wanted"))

    def _resolution(self, turned):
        """The source's (x, y, unit); None when there is none to carry over."""
        resolution = self.expected.resolution
        if resolution is None or resolution[0] <= 0 or resolution[1] <= 0:
            return None
        x, y, unit = resolution
        return (y, x, unit) if turned and self.expected.orientation >= 5 else (x, y, unit)

    def _resolution_per_metre(self, found, picture):
        wanted = self._resolution(True)
        got = picture.resolution if picture.resolution and picture.resolution[2] == "metre" else None
        if wanted is None or wanted[2] == "none":
            if got:
                found.append(("resolution", f"{got[0]} x {got[1]} a metre where none is known"))
            return
        factor = 100 if wanted[2] == "cm" else 1 / 0.0254
        metre = wanted[0] * factor, wanted[1] * factor
        if min(metre) < 0.5 or max(metre) > 0x7FFFFFFF:
            return
        # Two decimals of the table and the format's own rounding.
        if not got or any(abs(g - m) > 0.51 + 0.0005 * factor for g, m in zip(got, metre)):
            text = f"{got[0]} x {got[1]}" if got else "nothing"
            found.append(("resolution", f"{text} instead of {metre[0]:.1f} x {metre[1]:.1f} a metre"))

    def _density(self, found, picture):
        wanted, got = self._resolution(True), picture.resolution
        known = got if got and got[2] != "none" else None
        if wanted is None or wanted[2] == "none":
            if known:
                found.append(("resolution", f"{known} where none is known"))
            return
        inch = [v * 2.54 if wanted[2] == "cm" else v for v in wanted[:2]]
        if min(inch) < 0.5 or max(inch) > 65535:
            return
        if not known:
            found.append(("resolution", f"nothing instead of {inch[0]:.2f} x {inch[1]:.2f} dpi"))
            return
        factor = 2.54 if known[2] == "cm" else 1.0
        if any(abs(g - w / factor) > 0.51 for g, w in zip(known[:2], inch)):
            found.append(("resolution", f"{known} instead of {inch[0]:.2f} x {inch[1]:.2f} dpi"))

    def _tiff_resolution(self, found, picture):
        wanted, got = self.expected.resolution, picture.resolution
        if wanted is None:
            if got and got[2] != "none" and self._resolution(False) is None:
                found.append(("resolution", f"{got} where none is known"))
            return
        if wanted[0] <= 0 or wanted[1] <= 0:
            return
        if got is None:
            if wanted[2] != "none":
                found.append(("resolution", f"nothing instead of {wanted}"))
        elif got[2] != wanted[2] or any(abs(g - w) > 0.006 + 1e-5 * w
                                        for g, w in zip(got[:2], wanted[:2])):
            found.append(("resolution", f"{got} instead of {wanted}"))

    def _profile(self, found, picture):
        model = "rgb" if picture.model in ("palette", "ycbcr") else picture.model
        space = {"gray": b"GRAY", "rgb": b"RGB ", "cmyk": b"CMYK", "lab": b"Lab "}.get(model)
        if picture.icc is not None and picture.icc[16:20] == b"CMYK" and model != "cmyk":
            found.append(("icc", "a CMYK profile on other pixels"))
        if self.profile is None:
            if picture.icc is not None:
                found.append(("icc", "a profile that the source does not have"))
            return
        belongs = self.profile[16:20] == space
        if picture.icc is None:
            if belongs:
                found.append(("icc", "the profile is lost"))
        elif picture.icc != self.profile:
            found.append(("icc", "the profile is another one"))

    def _tiff_depth(self, found, picture):
        page = self.expected
        if page.form == "-" and page.sample_format == "3" and picture.sample_kind != "float":
            found.append(("depth", f"floating point became {picture.sample_kind}"))
        if page.bits == 1 and page.samples == 1 and picture.bits != 1:
            found.append(("depth", f"1 bit became {picture.bits}"))
        if page.bits == 16 and picture.bits < 16 and not self._fits_8_bits():
            found.append(("depth", f"16 bits became {picture.bits}"))
        if 8 < page.bits < 16 and picture.bits < page.bits:
            found.append(("depth", f"{page.bits} bits became {picture.bits}"))
        if self._is_gray() and picture.model != "gray":
            found.append(("channels", f"gray became {picture.model}"))
        if self._keeps_palette() and picture.model != "palette" and not self._looks_gray():
            found.append(("channels", f"a palette became {picture.model}"))


# Comparing ------------------------------------------------------------------------------------


def _compare_forms(found, got, wanted, tolerance, in_decibels):
    if got.same_as(wanted):
        return
    if got.size != wanted.size:
        found.append(("size", f"{got.size} instead of {wanted.size}"))
        return
    if (got.model == "cmyk") != (wanted.model == "cmyk"):
        found.append(("channels", f"{wanted.form} became {got.form}"))
        return
    same_depth = got.array.dtype.itemsize == wanted.array.dtype.itemsize == 1
    first, second = _all_channels(got, same_depth), _all_channels(wanted, same_depth)
    if first.shape != second.shape:
        found.append(("alpha", f"{wanted.form} became {got.form}"))
        return
    if in_decibels:
        decibels = psnr(first, second, 255 if same_depth else 65535)
        if decibels < tolerance:
            found.append(("pixels", f"{decibels:.1f} dB, at least {tolerance:.0f} dB are wanted"))
        return
    # One step of 8 bits is 257 of 16.
    coarse = not same_depth and min(got.array.dtype.itemsize, wanted.array.dtype.itemsize) == 1
    _compare_steps(found, first, second, tolerance * (257 if coarse else 1))


def _compare_steps(found, got, wanted, tolerance):
    if np.array_equal(got, wanted):
        return
    apart = np.abs(got.astype(np.int32) - wanted.astype(np.int32))
    most = int(apart.max())
    if most > tolerance:
        places = apart.max(axis=-1) > tolerance
        found.append(("pixels", f"{int(places.sum())} of {places.size} pixels differ, by up to {most}"))


def _all_channels(form, eight_bits):
    """Gray as RGB and alpha spelt out, so that two forms become comparable."""
    array = form.array if eight_bits else to_16_bits(form.array)
    if form.model == "cmyk":
        return array
    top = np.iinfo(array.dtype).max
    colour = np.repeat(array[:, :, :1], 3, axis=2) if form.model == "gray" else array[:, :, :3]
    alpha = array[:, :, -1:] if form.alpha else np.full_like(array[:, :, :1], top)
    return np.concatenate([colour, alpha], axis=2)


def _same_depth(form, other):
    if form.array.dtype == other.array.dtype:
        return form
    if other.array.dtype.itemsize == 2:
        return Canonical(form.model, to_16_bits(form.array), form.alpha)
    return Canonical(form.model, to_8_bits(form.array), form.alpha)


def _split(form):
    return form.array[:, :, :-1].astype(np.uint64), form.array[:, :, -1:].astype(np.uint64)


def _joined(form, colour, alpha, kind):
    return Canonical(form.model, np.concatenate([colour, alpha], axis=2).astype(form.array.dtype), kind)


def _multiplied(form):
    colour, alpha = _split(form)
    return _joined(form, (colour * alpha + form.peak // 2) // form.peak, alpha, "associated")


def _clipped_to_alpha(form):
    """A multiplied colour above its alpha cannot be: no un-multiplied colour gives it."""
    colour, alpha = _split(form)
    return _joined(form, np.minimum(colour, alpha), alpha, "associated")


def _unmultiplied(form):
    colour, alpha = _split(form)
    straight = (colour * form.peak + alpha // 2) // np.maximum(alpha, 1)
    return _joined(form, np.minimum(straight, form.peak), alpha, "unassociated")


def _over_white(form):
    if form is None or not form.alpha:
        return form
    colour, alpha = _split(form)
    top = form.peak
    laid = (colour * alpha + top * (top - alpha) + top // 2) // top
    return simplify(Canonical(form.model, laid.astype(form.array.dtype)))


def _count_colours(rgb):
    flat = rgb.reshape(-1, 3).astype(np.uint32)
    seen = np.zeros(1 << 24, bool)
    seen[flat[:, 0] << 16 | flat[:, 1] << 8 | flat[:, 2]] = True
    return int(np.count_nonzero(seen))


def _blurred(rgb, side=4):
    """The means of squares, so that error diffusion does not count as an error."""
    height, width = rgb.shape[:2]
    padded = np.pad(rgb, ((0, -height % side), (0, -width % side), (0, 0)), "edge")
    cells = padded.reshape(padded.shape[0] // side, side, padded.shape[1] // side, side, 3)
    return cells.mean(axis=(1, 3), dtype=np.float32)
