"""Decoded pages and the one form in which pages of different formats are compared."""
import hashlib

import numpy as np


class DecodeError(Exception):
    """The bytes break the format's rules, or use a part of it that these readers do not know."""


class Picture:
    """One decoded page as its file stores it: rows from the top as stored, nothing converted.

    `samples` has the shape (height, width, samples a pixel); `model` is gray, palette, rgb, cmyk,
    ycbcr, lab, or the number of another photometric interpretation. Colour samples come first, then
    `extras`, one of None, "associated", "unassociated" each. `palette` is (entries, 3) with 8 or 16-bit
    values. Resolution is (x, y, unit) with unit none, inch, cm or metre, or None.
    """

    def __init__(self, samples, model, bits, *, sample_kind="uint", white_is_zero=False, extras=(), palette=None):
        self.samples, self.model, self.bits, self.sample_kind = samples, model, bits, sample_kind
        self.white_is_zero, self.extras, self.palette = white_is_zero, tuple(extras), palette
        self.height, self.width, self.channels = samples.shape
        self.resolution = self.icc = self.compression = None
        self.stored_as = bits, model  # in its file, where that differs from the samples here
        self.orientation, self.details = 1, {}

    def shows_the_same_as(self, other):
        """The same pixels in the same kind of storage; polarity of black and white aside."""
        first, second = ((p.model, p.bits, p.sample_kind, p.extras, p.samples.shape, p.palette is None)
                         for p in (self, other))
        if first != second or (self.palette is not None and not np.array_equal(self.palette, other.palette)):
            return False
        is_turned = self.white_is_zero != other.white_is_zero
        if is_turned and (self.bits, self.channels) != (1, 1):
            return False
        wanted = other.samples ^ 1 if is_turned else other.samples
        return np.array_equal(self.samples, wanted, equal_nan=self.samples.dtype.kind == "f")


class Canonical:
    """Pixels as gray, gray+alpha, RGB, RGB+alpha or CMYK of 8 or 16 bits, 0 being black."""

    def __init__(self, model, array, alpha=None):
        # `alpha` is None, "associated" or "unassociated"; the alpha channel is the last.
        self.model, self.array, self.alpha = model, array, alpha

    @property
    def form(self):
        name = self.model.upper() + ("A" if self.alpha else "")
        return name + str(self.array.dtype.itemsize * 8)

    @property
    def size(self):
        return self.array.shape[1], self.array.shape[0]

    @property
    def peak(self):
        return int(np.iinfo(self.array.dtype).max)

    def digest(self):
        hashed = hashlib.sha256(f"{self.form} {self.size[0]} {self.size[1]}\n".encode())
        stored = self.array.astype(">u2") if self.array.dtype.itemsize == 2 else self.array
        hashed.update(np.ascontiguousarray(stored).data)
        return "sha256:" + hashed.hexdigest()

    def same_as(self, other):
        return self.form == other.form and np.array_equal(self.array, other.array)


def to_full_range(values, bits):
    """Unsigned samples of 1 to 16 bits as 8-bit ones (up to 8 bits) or 16-bit ones."""
    if bits in (8, 16):
        return values
    top, full = (1 << bits) - 1, 255 if bits < 8 else 65535
    table = (np.arange(top + 1, dtype=np.uint64) * (2 * full) + top) // (2 * top)
    return table.astype(np.uint8 if bits < 8 else np.uint16)[values]


def canonical(picture):
    """The canonical form; None when the page has none (float, signed, over 16 bits, Lab ...)."""
    if picture.sample_kind != "uint" or picture.bits > 16:
        return None
    if picture.model == "palette":
        palette = picture.palette >> (8 if picture.palette.max(initial=0) > 255 else 0)
        colour = palette.astype(np.uint8)[picture.samples[:, :, 0]]
        return simplify(_with_alpha("rgb", colour, picture, 1))
    if picture.model == "ycbcr":
        return simplify(Canonical("rgb", ycbcr_to_rgb(picture)))
    channels = {"gray": 1, "rgb": 3, "cmyk": 4}.get(picture.model)
    if channels is None or picture.channels < channels:
        return None
    colour = to_full_range(picture.samples[:, :, :channels], picture.bits)
    if picture.white_is_zero:
        colour = np.iinfo(colour.dtype).max - colour
    return simplify(_with_alpha(picture.model, colour, picture, channels))


def _with_alpha(model, colour, picture, channels):
    extras = picture.extras[:picture.channels - channels]
    which = next((i for i, kind in enumerate(extras) if kind), None)
    if which is None or model == "cmyk":
        return Canonical(model, colour)
    alpha = to_full_range(picture.samples[:, :, channels + which:channels + which + 1], picture.bits)
    if alpha.dtype != colour.dtype:  # a 16-bit index beside a palette brought to 8 bits
        alpha = (alpha // 257).astype(np.uint8)
    return Canonical(model, np.concatenate([colour, alpha], axis=2), extras[which])


def simplify(form):
    """Drops what says nothing: opaque alpha, equal colours, equal halves of 16-bit samples."""
    array, model, alpha = form.array, form.model, form.alpha
    if alpha and np.all(array[:, :, -1] == np.iinfo(array.dtype).max):
        array, alpha = array[:, :, :-1], None
    if model == "rgb" and np.all(array[:, :, :2] == array[:, :, 1:3]):
        array, model = np.delete(array, (1, 2), axis=2), "gray"
    if array.dtype.itemsize == 2 and np.all((array >> 8) == (array & 255)):
        array = array.astype(np.uint8)
    return Canonical(model, array, alpha)


def ycbcr_to_rgb(picture):
    """Full-size YCbCr samples by the format's own coefficients and reference black and white."""
    red, green, blue = picture.details.get("coefficients") or (0.299, 0.587, 0.114)
    low_high = picture.details.get("reference") or (0, 255, 128, 255, 128, 255)
    y, cb, cr = ((picture.samples[:, :, i].astype(np.float64) - low_high[2 * i]) * (127 if i else 255)
                 / (low_high[2 * i + 1] - low_high[2 * i]) for i in range(3))
    r, b = cr * (2 - 2 * red) + y, cb * (2 - 2 * blue) + y
    g = (y - blue * b - red * r) / green
    return np.clip(np.rint(np.stack([r, g, b], axis=2)), 0, 255).astype(np.uint8)


def upright(array, orientation):
    """Applies a TIFF orientation: stored rows and columns become visual ones."""
    array = array.swapaxes(0, 1) if orientation >= 5 else array
    return array[::-1 if orientation in (3, 4, 7, 8) else 1, ::-1 if orientation in (2, 3, 6, 7) else 1]


def as_stored(array, orientation):
    """The inverse of upright()."""
    return upright(array, {6: 8, 8: 6}.get(orientation, orientation))


def psnr(first, second, peak):
    """Decibels between two arrays of the same shape; infinite when they are equal."""
    total, rows = 0.0, max(1, (1 << 22) // max(first[:1].size, 1))
    for top in range(0, len(first), rows):  # in bands: a large page in doubles is very large
        error = first[top:top + rows].astype(np.float64) - second[top:top + rows]
        total += float(np.sum(error * error))
    return 10 * np.log10(peak * peak * first.size / total) if total else float("inf")


def to_8_bits(array):
    """16-bit samples rounded to 8 bits."""
    if array.dtype.itemsize == 1:
        return array
    return ((array.astype(np.uint32) * 255 + 32767) // 65535).astype(np.uint8)


def to_16_bits(array):
    return array if array.dtype.itemsize == 2 else array.astype(np.uint16) * 257


def as_rgb(form):
    """The colour channels as RGB; CMYK by the plain formula."""
    array = form.array
    if form.model == "gray":
        return np.repeat(array[:, :, :1], 3, axis=2)
    if form.model == "rgb":
        return array[:, :, :3]
    ink = array.astype(np.uint32)
    top = form.peak
    return ((top - ink[:, :, :3]) * (top - ink[:, :, 3:4]) // top).astype(array.dtype)
