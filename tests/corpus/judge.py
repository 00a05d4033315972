"""What an output page owes to its source page. Every check appends (what, text) to a list."""
import numpy as np

from picture import (Canonical, as_rgb, as_stored, canonical, psnr, simplify, to_16_bits, to_8_bits)

JPEG_DECIBELS = 38.0
CMYK_DECIBELS = 12.0  # any sane RGB passes; an inverted one does not
REDUCED_DECIBELS = 25.0  # GIF of more than 256 colours, after blurring the diffusion away
PER_METRE = {"metre": 1.0, "cm": 100.0, "inch": 1 / 0.0254, "none": 1.0}
COMPRESSION_TAGS = {"none": 1, "g3": 3, "g4": 4, "lzw": 5, "packbits": 32773}


class PageJudge:
    """Holds one source page against its outputs."""

    def __init__(self, expected, reference, profile):
        self.expected, self.reference, self.profile = expected, reference, profile
        self._twin = None
        page, form = expected, expected.form
        self._is_cmyk, self._fits_8_bits = form.startswith("CMYK"), form.endswith("8")
        self._is_bilevel = page.bits == page.samples == 1
        self._is_gray = (not self._is_cmyk and page.photometric in ("minisblack", "miniswhite")
                         and page.samples == (1 if page.alpha == "none" else 2))
        self._keeps_palette = page.photometric == "palette" and page.bits <= 8 and page.samples == 1

    def judged(self, picture, format_):
        """What is wrong with an output in one of the formats, as (what, text)."""
        found = []
        if picture.compression is not None:
            self._tiff(found, picture, format_.removeprefix("kept-").replace("tiff", "none"))
        else:
            self._size(found, picture, True)
            if format_ in ("png", "bmp"):
                self._lossless(found, picture, is_bmp=format_ == "bmp")
            else:
                (self._gif if format_ == "gif" else self._jpeg)(found, picture)
        if format_ != "gif":
            self._resolution(found, picture)
            self._storage(found, picture, format_)
        if format_ not in ("gif", "bmp"):
            self._profile(found, picture)
        return found

    # What the five formats are held to -------------------------------------------------------

    def _gif(self, found, picture):
        wanted = self._display_form()
        if found or wanted is None:
            return
        shown = as_stored(picture.samples, self.expected.orientation)
        colours, opaque = to_8_bits(as_rgb(wanted)), np.ones(shown.shape[:2], bool)
        if wanted.alpha:
            alpha = to_8_bits(wanted.array[:, :, -1])
            opaque = alpha == 255
            hidden = shown[:, :, 3] == 0 if shown.shape[2] == 4 else np.zeros_like(opaque)
            if np.any(hidden[opaque]) or not np.all(hidden[alpha == 0]):
                found.append(("alpha", "opaque pixels became transparent, or transparent ones opaque"))
        shown = np.where(opaque[:, :, None], shown[:, :, :3], colours)
        most = 256 if opaque.all() else 200  # there are others where the page is half transparent
        if self.reference.proved and not self.reference.tolerance and not self._is_cmyk and (
                self.expected.form[-2:] != "16" and _count_colours(colours[opaque]) <= most):
            _compare_steps(found, shown, colours, 0 if opaque.all() else 1)
        else:
            limit = CMYK_DECIBELS if self._is_cmyk else REDUCED_DECIBELS
            self._near(found, shown, colours, limit, blurred=True)

    def _jpeg(self, found, picture):
        wanted = self._display_form()
        if not found and wanted is not None:
            limit = JPEG_DECIBELS
            if self._is_cmyk:
                limit = CMYK_DECIBELS
            elif not self.reference.proved and self.reference.in_decibels:
                limit = min(limit, self.reference.tolerance)
            shown = as_stored(as_rgb(Canonical(picture.model, picture.samples)),
                              self.expected.orientation)
            self._near(found, shown, to_8_bits(as_rgb(_over_white(wanted))), limit)
        if picture.details["is progressive"]:
            found.append(("frame", "not baseline"))

    def _tiff(self, found, picture, compression):
        """A page of a TIFF file; most pages show the same as one that was judged before."""
        if picture.orientation != self.expected.orientation:
            found.append(("orientation", f"{self.expected.orientation} became {picture.orientation}"))
        self._size(found, picture, False)
        if not self._twin or not picture.shows_the_same_as(self._twin[0]):
            self._twin = picture, []
            self._lossless(self._twin[1], picture)
        found += self._twin[1]
        wanted = COMPRESSION_TAGS[compression]
        if compression in ("g3", "g4") and not picture.bits == picture.channels == 1:
            wanted = 1
        if picture.compression != wanted:
            found.append(("compression", f"tag {picture.compression} instead of {wanted}"))

    def _display_form(self):
        """The reference with its alpha, which the canonical form of inks does not keep."""
        form, alpha = self.reference.form, self.reference.ink_alpha
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

    def _lossless(self, found, picture, is_bmp=False):
        """Compares all pixels; `picture` is upright except in TIFF, and without alpha in BMP."""
        if any(what == "size" for what, _ in found):
            return
        page, reference, in_tiff = self.expected, self.reference, picture.compression is not None
        if in_tiff and reference.stored is not None and picture.shows_the_same_as(reference.stored):
            return
        form, wanted = canonical(picture), reference.form
        has_only_samples = (wanted is None and in_tiff and reference.stored is not None
                            and page.photometric in ("minisblack", "rgb", "cielab"))
        if form is None or has_only_samples:
            found.append(("pixels", f"{picture.model} of {picture.bits} bits ({picture.sample_kind}) "
                                    "differs from the source's own samples"))
            return
        if not in_tiff:
            form = Canonical(form.model, as_stored(form.array, page.orientation), form.alpha)
        if wanted is None:
            if page.pixels.startswith("sha256:") and form.digest() != page.pixels:
                found.append(("pixels", "the digest differs"))
        elif wanted.model == form.model == "cmyk":
            _compare_forms(found, form, wanted, 1 if page.pixels.startswith("near") else 0, page.is_lossy)
        elif wanted.model == "cmyk" and in_tiff:
            found.append(("channels", f"CMYK became {form.form}"))
        elif wanted.model == "cmyk":
            wanted = _over_white(self._display_form()) if is_bmp else wanted
            self._near(found, to_8_bits(as_rgb(form)), to_8_bits(as_rgb(wanted)), CMYK_DECIBELS)
        elif wanted.alpha == "associated" and form.alpha == "unassociated":
            _compare_forms(found, _over_white(form), _over_white(wanted), 1, False)
            _compare_forms(found, _alpha_of(form), _alpha_of(wanted), 1, False)
        else:
            self._compare_colours(found, form, wanted, is_bmp)

    def _compare_colours(self, found, form, wanted, is_bmp):
        in_decibels, rounding = self.reference.in_decibels, 0
        if wanted.alpha and is_bmp:
            wanted, rounding = _over_white(self._display_form()), 1
        if is_bmp and wanted.array.dtype.itemsize == 2:
            wanted = simplify(Canonical(wanted.model, to_8_bits(wanted.array), wanted.alpha))
            rounding = max(rounding, 1 if self.expected.bits < 16 else 0)
        if in_decibels and form.alpha and form.alpha == wanted.alpha == "unassociated":
            # What a lossy codec leaves under transparent pixels is nobody's picture.
            _compare_forms(found, _alpha_of(form), _alpha_of(wanted), self.reference.tolerance, True)
            form, wanted = _over_white(form), _over_white(wanted)
        tolerance = self.reference.tolerance
        _compare_forms(found, form, wanted, tolerance if in_decibels else max(tolerance, rounding), in_decibels)

    @staticmethod
    def _near(found, shown, wanted, limit, blurred=False):
        if blurred:
            shown, wanted = _blurred(shown), _blurred(wanted)
        decibels = psnr(shown, wanted, 255)
        if decibels < limit:
            found.append(("pixels", f"{decibels:.1f} dB, at least {limit:.0f} dB are wanted"))

    def _resolution(self, found, picture):
        """As the source's, within the two decimals of the table and the rounding of the format."""
        wanted, got, in_tiff = self.expected.resolution, picture.resolution, picture.compression is not None
        if wanted and min(wanted[:2]) <= 0:
            if in_tiff:
                return
            wanted = None
        if wanted and wanted[2] == "none" and not (in_tiff and got):
            wanted = None
        if got and got[2] == "none" and not in_tiff:
            got = None
        if wanted is None:
            if got and got[2] != "none":
                found.append(("resolution", f"{got} where none is known"))
            return
        unit = got[2] if got and not in_tiff else wanted[2]
        factor = PER_METRE[wanted[2]] / PER_METRE[unit]
        turned = not in_tiff and self.expected.orientation >= 5
        pair = [v * factor for v in (wanted[1::-1] if turned else wanted[:2])]
        most = 65535 if "is progressive" in picture.details else 0x7FFFFFFF
        per_metre = [v * PER_METRE[unit] / (PER_METRE["inch"] if most == 65535 else 1) for v in pair]
        if not in_tiff and (min(per_metre) < 0.5 or max(per_metre) > most):
            return
        if not got or got[2] != unit or any(
                abs(g - w) > (0.006 + 1e-5 * w if in_tiff else 0.51 + 0.0005 * factor) for g, w in zip(got, pair)):
            found.append(("resolution", f"{got} instead of {pair} {unit}"))

    def _profile(self, found, picture):
        model = "rgb" if picture.model in ("palette", "ycbcr") else picture.model
        space = {"gray": b"GRAY", "rgb": b"RGB ", "cmyk": b"CMYK", "lab": b"Lab "}.get(model)
        if picture.icc is None:
            if self.profile is not None and self.profile[16:20] == space:
                found.append(("icc", "the profile is lost"))
        elif picture.icc != self.profile or (picture.icc[16:20] == b"CMYK" and model != "cmyk"):
            found.append(("icc", "a profile that the source does not have, or of other pixels"))

    def _storage(self, found, picture, format_):
        """Depth and channels are those of the source, as far as the format has them."""
        page, (bits, model) = self.expected, picture.stored_as
        in_tiff = picture.compression is not None
        if in_tiff and page.form == "-" and page.sample_format == "3" and picture.sample_kind != "float":
            found.append(("depth", f"floating point became {picture.sample_kind}"))
        is_deep = 8 < page.bits <= 16 and not self._fits_8_bits and (in_tiff or page.sample_format == "1")
        if (self._is_bilevel and bits != 1 and format_ != "jpeg") or (
                is_deep and bits < page.bits and format_ not in ("bmp", "jpeg")):
            found.append(("depth", f"{page.bits} bits became {bits}"))
        kinds = ["gray"] if self._is_gray and (format_ != "bmp" or page.alpha == "none") else [
            "palette", "gray"] if self._keeps_palette and format_ != "jpeg" else [model]
        if model not in kinds:
            found.append(("channels", f"{page.photometric} became {model}"))


# Comparing ------------------------------------------------------------------------------------


def _compare_forms(found, got, wanted, tolerance, in_decibels):
    if got.same_as(wanted):
        return
    same_depth = got.array.dtype.itemsize == wanted.array.dtype.itemsize == 1
    first, second = _all_channels(got, same_depth), _all_channels(wanted, same_depth)
    if first.shape != second.shape or (got.model == "cmyk") != (wanted.model == "cmyk"):
        found.append(("channels", f"{wanted.form} {wanted.size} became {got.form} {got.size}"))
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
    alpha = array[:, :, -1:] if form.alpha else np.full_like(array[:, :, :1], np.iinfo(array.dtype).max)
    return np.concatenate([np.broadcast_to(array[:, :, :3 if form.model == "rgb" else 1],
                                           (*array.shape[:2], 3)), alpha], axis=2)


def _alpha_of(form):
    return Canonical("gray", form.array[:, :, -1:])


def _over_white(form):
    if form is None or not form.alpha:
        return form
    top, alpha = form.peak, form.array[:, :, -1:].astype(np.uint64)
    colour = form.array[:, :, :-1].astype(np.uint64)
    if form.alpha == "unassociated":
        colour = (colour * alpha + top // 2) // top
    # A multiplied colour above its alpha cannot be.
    laid = np.minimum(colour, alpha) + top - alpha
    return simplify(Canonical(form.model, laid.astype(form.array.dtype)))


def _count_colours(rgb):
    seen = np.zeros(1 << 24, bool)
    seen[rgb.reshape(-1, 3) @ np.array([65536, 256, 1], np.uint32)] = True
    return int(np.count_nonzero(seen))


def _blurred(rgb, side=4):
    """The means of squares, so that error diffusion does not count as an error."""
    height, width = rgb.shape[:2]
    padded = np.pad(rgb, ((0, -height % side), (0, -width % side), (0, 0)), "edge")
    cells = padded.reshape(padded.shape[0] // side, side, padded.shape[1] // side, side, 3)
    return cells.mean(axis=(1, 3), dtype=np.float32)
