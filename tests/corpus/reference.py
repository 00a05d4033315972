"""What a source page shows, from decoders that have nothing to do with the program judged.

Where the corpus states a digest, the pixels of the own reader or of Pillow are taken when they give this very digest:
such a reference is proved. Otherwise it is only the best that could be had, and says so.
"""
import warnings

import numpy as np
from PIL import Image

from picture import Canonical, DecodeError, Picture, canonical, simplify
from tiff_reader import Pages

Image.MAX_IMAGE_PIXELS = None
ROUNDED = 1  # a difference of one step of the coarser depth


class Reference:
    """`form` is the canonical picture in stored order, or None when nothing could be had.
    `proved`: it has the digest that the corpus states. `tolerance` is a number of steps, or decibels
    when `in_decibels`. `stored` is the page as its file holds it, where the own reader can be trusted
    with it: TIFF output may hold the very same samples. `ink_alpha` is the alpha channel of a CMYK page,
    which the canonical form does not keep."""

    def __init__(self, form, proved, stored=None, tolerance=0, in_decibels=False):
        self.form, self.proved, self.stored = form, proved, stored
        self.tolerance, self.in_decibels = tolerance, in_decibels
        self.ink_alpha = None


class References:
    """The references of one source file, by page number."""

    def __init__(self, path, scratch):
        self._path, self._scratch = path, scratch
        try:
            self._pages = Pages(path, scratch)
        except DecodeError:
            self._pages = None

    def of(self, page):
        stored = self._stored(page)
        own = None
        if stored is not None and not (page.photometric == "ycbcr" and page.is_lossy):
            own = canonical(stored)
        if page.pixels.startswith("n/a"):
            form, tolerance = _by_rule(stored)
            return Reference(form, False, stored, tolerance, True)
        if page.pixels.startswith("sha256:"):
            result = self._proved(page, stored, own)
        elif page.pixels.startswith("near") or page.photometric == "ycbcr":
            result = Reference(own or self._by_pillow(page), False, stored, *_tolerance(page))
        else:  # the decoders disagree or only one reads it: nothing to judge by
            result = Reference(None, False)
        if stored is not None and stored.model == "cmyk" and page.alpha != "none":
            result.ink_alpha = stored.samples[:, :, 4:5]
        return result

    def _proved(self, page, stored, own):
        if own is not None and own.digest() == page.pixels:
            return Reference(own, True, stored, *_tolerance(page))
        form = self._by_pillow(page)
        proved = form is not None and form.digest() == page.pixels
        return Reference(form if proved else own or form, proved, None, *_tolerance(page))

    def source_profile(self, page):
        if not self._pages or page.number > len(self._pages):
            return None
        return self._pages.file.directories[page.number - 1].icc

    def _stored(self, page):
        if not self._pages or page.number > len(self._pages):
            return None
        picture = self._pages.page(page.number - 1)
        return picture if isinstance(picture, Picture) else None

    def _by_pillow(self, page):
        try:
            with warnings.catch_warnings(), Image.open(self._path) as file:
                warnings.simplefilter("ignore")
                file.seek(page.number - 1)
                return _from_pillow(file)
        except Exception:  # whatever a decoder throws at bad input
            return None


def _from_pillow(frame):
    if frame.mode == "1":
        return simplify(Canonical("gray", np.asarray(frame, np.uint8)[:, :, None] * np.uint8(255)))
    if frame.mode == "P":
        frame = frame.convert("RGBA" if "transparency" in frame.info else "RGB")
    if frame.mode == "PA":
        frame = frame.convert("RGBA")
    model = {"L": "gray", "LA": "gray", "RGB": "rgb", "RGBX": "rgb", "RGBA": "rgb", "CMYK": "cmyk",
             "I;16": "gray"}.get(frame.mode)
    if model is None:
        return None
    pixels = np.asarray(frame)
    pixels = pixels.reshape(frame.height, frame.width, -1)
    if frame.mode == "RGBX":
        pixels = pixels[:, :, :3]
    return simplify(Canonical(model, pixels, "unassociated" if frame.mode in ("LA", "RGBA") else None))


def _tolerance(page):
    if page.is_lossy:
        return 40.0, True
    if page.photometric == "ycbcr":
        return 30.0, True
    odd_depth = page.bits not in (1, 2, 4, 8, 16)
    if page.photometric == "palette" or odd_depth or page.pixels.startswith("near"):
        return ROUNDED, False
    return 0, False


def _by_rule(stored):
    """Pages without a canonical form: what the plain rules make of them, and how many decibels an
    output must come near to it. (None, 0) when there is no rule."""
    if stored is None:
        return None, 0.0
    values = stored.samples
    if stored.model == "lab":
        form = _lab_to_rgb(stored)
        return form and _with_alpha_of(stored, form), 28.0
    channels, top = {"gray": 1, "rgb": 3}.get(stored.model), (1 << stored.bits) - 1
    if channels is None or values.shape[2] < channels or stored.sample_kind == "other":
        return None, 0.0
    scaled = values[:, :, :channels].astype(np.float64)
    if stored.sample_kind == "float":
        scaled = np.clip(np.nan_to_num(scaled, nan=0.0), 0, 1)
    else:
        scaled = (scaled + (1 << (stored.bits - 1) if stored.sample_kind == "int" else 0)) / top
    if stored.white_is_zero:
        scaled = 1 - scaled
    form = Canonical(stored.model, np.rint(scaled * 65535).astype(np.uint16))
    return _with_alpha_of(stored, form), 40.0


def _with_alpha_of(stored, form):
    """Adds the page's alpha to a form made of its colours, where there is one of whole numbers."""
    kinds = [kind for kind in stored.extras if kind]
    if not kinds or stored.sample_kind != "uint" or stored.bits != form.array.dtype.itemsize * 8:
        return form
    place = stored.channels - len(stored.extras) + stored.extras.index(kinds[0])
    array = np.concatenate([form.array, stored.samples[:, :, place:place + 1]], axis=2)
    return simplify(Canonical(form.model, array, kinds[0]))


def _lab_to_rgb(stored):
    """CIELab under D50 to sRGB; the a and b samples are signed in the plain encoding (8) and
    offset in the other (9)."""
    photometric = stored.details.get("photometric")
    if photometric not in (8, 9) or stored.bits not in (8, 16):
        return None
    top, step = (1 << stored.bits) - 1, 1 << (stored.bits - 8)
    raw = stored.samples[:, :, :3].astype(np.float64)
    light = raw[:, :, 0] / (top if photometric == 8 or stored.bits == 8 else 0xFF00) * 100
    if photometric == 8:
        signed = stored.samples[:, :, 1:3].astype(f"i{stored.bits // 8}").astype(np.float64)
        a, b = signed[:, :, 0] / step, signed[:, :, 1] / step
    else:
        a, b = raw[:, :, 1] / step - 128, raw[:, :, 2] / step - 128
    fy = (light + 16) / 116
    def inverse(f):
        return np.where(f > 6 / 29, f ** 3, 3 * (6 / 29) ** 2 * (f - 4 / 29))
    x, y, z = 0.9642 * inverse(fy + a / 500), inverse(fy), 0.8249 * inverse(fy - b / 200)
    # XYZ under D50 to linear sRGB, the adaptation to D65 included.
    matrix = np.array([[3.1338561, -1.6168667, -0.4906146], [-0.9787684, 1.9161415, 0.0334540],
                       [0.0719453, -0.2289914, 1.4052427]])
    linear = np.clip(np.stack([x, y, z], axis=2) @ matrix.T, 0, 1)
    curved = np.where(linear <= 0.0031308, 12.92 * linear, 1.055 * linear ** (1 / 2.4) - 0.055)
    return Canonical("rgb", np.rint(curved * 255).astype(np.uint8))

