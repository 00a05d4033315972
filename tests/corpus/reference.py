"""What a source page shows, from decoders that have nothing to do with the program judged.

Where the corpus states a digest, the pixels of the own reader or of Pillow are taken when they give this very digest:
such a reference is proved. Otherwise it is only the best that could be had, and says so.
"""
import warnings
from typing import NamedTuple

import numpy as np
from PIL import Image

from picture import Canonical, DecodeError, Picture, canonical, simplify
from tiff_reader import Pages

Image.MAX_IMAGE_PIXELS = None
ROUNDED = 1  # a difference of one step of the coarser depth


class Reference(NamedTuple):
    """`form` is the canonical picture in stored order, or None when nothing could be had.
    `proved`: it has the digest that the corpus states. `tolerance` is a number of steps, or decibels
    when `in_decibels`. `stored` is the page as its file holds it, where the own reader can be trusted
    with it: TIFF output may hold the very same samples. `ink_alpha` is the alpha channel of a CMYK page,
    which the canonical form does not keep."""
    form: Canonical
    proved: bool
    stored: Picture = None
    tolerance: float = 0
    in_decibels: bool = False
    ink_alpha: np.ndarray = None


class References:
    """The references of one source file, by page number."""

    def __init__(self, path, scratch):
        self._path, self._scratch = path, scratch
        try:
            self._pages = Pages(path, scratch)
        except DecodeError:
            self._pages = None

    def of(self, page):
        stored, own = self._stored(page), None
        if stored is not None and not (page.photometric == "ycbcr" and page.is_lossy):
            own = canonical(stored)
        result = Reference(None, False)  # the decoders disagree or only one reads it: nothing to judge by
        if page.pixels.startswith("n/a"):  # floats, signed or long numbers, Lab: TIFF may keep the samples
            result = Reference(None, False, stored)
        elif page.pixels.startswith("sha256:"):
            if own is not None and own.digest() == page.pixels:
                result = Reference(own, True, stored, *_tolerance(page))
            else:
                form = self._by_pillow(page)
                proved = form is not None and form.digest() == page.pixels
                result = Reference(form if proved else own or form, proved, None, *_tolerance(page))
        elif page.pixels.startswith("near") or page.photometric == "ycbcr":
            result = Reference(own or self._by_pillow(page), False, stored, *_tolerance(page))
        has_ink_alpha = stored is not None and stored.model == "cmyk" and page.alpha != "none"
        return result._replace(ink_alpha=stored.samples[:, :, 4:5]) if has_ink_alpha else result

    def source_profile(self, page):
        is_there = self._pages and page.number <= len(self._pages)
        return self._pages.file.directories[page.number - 1].icc if is_there else None

    def _stored(self, page):
        is_there = self._pages and page.number <= len(self._pages)
        picture = self._pages.page(page.number - 1) if is_there else None
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
    if frame.mode in ("P", "PA"):
        is_opaque = frame.mode == "P" and "transparency" not in frame.info
        frame = frame.convert("RGB" if is_opaque else "RGBA")
    pixels = np.asarray(frame).reshape(frame.height, frame.width, -1)
    if frame.mode == "1":
        return simplify(Canonical("gray", pixels * np.uint8(255)))
    model, channels = {"L": ("gray", 1), "I;16": ("gray", 1), "LA": ("gray", 2), "RGB": ("rgb", 3),
                       "RGBX": ("rgb", 3), "RGBA": ("rgb", 4), "CMYK": ("cmyk", 4)}[frame.mode]
    alpha = "unassociated" if frame.mode in ("LA", "RGBA") else None
    return simplify(Canonical(model, pixels[:, :, :channels], alpha))


def _tolerance(page):
    if page.is_lossy:
        return 40.0, True
    if page.photometric == "ycbcr":
        return 30.0, True
    odd_depth = page.bits not in (1, 2, 4, 8, 16)
    if page.photometric == "palette" or odd_depth or page.pixels.startswith("near"):
        return ROUNDED, False
    return 0, False
