#!/usr/bin/env python3
"""The window knows every text that the engine tells users, so that it has them in other languages:
reasons.py ROOT"""

import re
import sys
from pathlib import Path

from project_files import report

TABLE = "engine/log/ReasonPatterns.cpp"
FOLDERS = ("engine", "filelist", "mainwindow/run")
COMMANDS = "engine/fleet/"  # of the command line alone
TOKEN = re.compile(r'//[^\n]*|/\*.*?\*/|#\s*\w+[^\n]*|R"\(.*?\)"|"(?:[^"\\\n]|\\.)*"|'
                   r"'(?:[^'\\\n]|\\.)+'|\s+|\w+|.", re.S)
NO_PART = re.compile(r"\s|//|/[*]|(?:u8?|_s|_L1|u)$")
WORDS = re.compile(r"[a-z]{2,}[,;:.]? |[ (][a-z]{2,}")
CODEC_TEXT = re.compile(r"\bEntry \{[^}]*\}")  # a row of the table of what libtiff says
PLACE = re.compile(r"%L?[1-9n]")

# Files of which no text is shown as a reason: markup and dates, words of codecs that are looked for,
# facts of a page, what is translated where it is made.
UNSHOWN_FILES = {
    "engine/image/metadata/XmpPacket.cpp", "engine/image/metadata/MetadataReader.cpp",
    "engine/image/metadata/ExifBlock.cpp", "engine/image/formats/png/PngMetadata.cpp",
    "engine/image/tiffwriter/LeftOutTags.h", "engine/image/CodecVersions.cpp",
    "engine/image/decode/JpegStream.cpp", "engine/image/decode/JpegPageBlocks.cpp",  # asked why by nobody
    "engine/image/decode/JpegCodeWalk.cpp",
    "engine/log/Log.cpp", "engine/log/RunReport.cpp", "engine/log/Diagnostic.cpp", TABLE,
    "engine/preview/PageFacts.cpp", "engine/support/Dates.cpp", "filelist/ListExport.cpp",
    "filelist/FileItem.cpp", "filelist/ListFilter.cpp"}
UNSHOWN = [re.compile(text) for text in (
    r"Err?or in \(|Erorr in \(", r"In Process\.\.\.",  # the system log's, and the clock's
    r"The name is no UTF-8 text, so ", r"page .* is not one bit deep",
    r"floating-point samples are taken", r"pages that are thumbnails or masks, which",
    # of promises that the program makes itself
    r"a bitmap needs as many samples", r"rows of the page are missing", r"only RGB pixels of 8 bits",
    r"the file is open for reading",
    r"^index $|beyond bounds",
    # of the command line
    r"folders are repeated from", r"files hold no texts, dates", r"the format $",
    r"without --(bilevel|split)", r"a --quality below", r"JPEG data taken over", r"a --name without", r"standard input",
    # what stands for a file or tells of a codec, none of which is a text by itself
    r"the file$", r"No space for", r"libdeflate|nettle|qpdf", r"GDAL_NODATA", r"Photoshop",
    r"(white|black) is zero|L\*a\*b\*$|old-style JPEG|extraneous bytes$", r"Tag $|tag %1$")]


def statements(text):
    """(line, literals, whether one of them is chosen) of each statement with literals."""
    line, found, begun, isopen, chosen, call = 1, [], 1, False, False, ""
    for match in TOKEN.finditer(text):
        token = match[0]
        if token[0] == '"':
            part = re.sub(r"\\(.)", r"\1", token[1:-1])
            if isopen:
                found[-1] += part
            elif not call.endswith(("tr", "NOOP", "translate")):
                begun = begun if found else line
                found.append(part)
            isopen = not call.endswith(("tr", "NOOP", "translate"))
        elif not NO_PART.match(token):
            isopen = False
            chosen = chosen or token == "?"
            if token in ";{}":
                if found:
                    yield begun, found, chosen
                found, chosen, call = [], False, ""
            elif token[0].isalpha():
                call = token
            elif token == ")":
                call = ""
        line += token.count("\n")


def expression(text):
    return ".*?".join(re.escape(piece) for piece in PLACE.split(text))


def is_known(literals, chosen, patterns):
    """Whether a pattern holds the literals in their order, or, of several, one holds each."""
    parts = [literals] if not chosen else [[literal] for literal in literals]
    return all(any(re.search(".*?".join(map(expression, part)), pattern) for pattern in patterns)
               for part in parts)


def uncovered(pattern, literals):
    """The words of a pattern that no literal of the engine holds."""
    left = PLACE.sub("\0", pattern)
    for piece in sorted({piece.strip(" ") for literal in literals
                         for piece in PLACE.split(literal)}, key=len, reverse=True):
        if re.search(r"[a-z]", piece):
            left = left.replace(piece, "\0")
    return re.findall(r"[A-Za-z]{2,}", left)


def selftest():
    made = 'throw E("a page of " + s(n) + " is " + (x ? "low" : "too high")); f(u"no %1 is"_s.arg(2));'
    found = list(statements(made))
    known = ["a page of %1 is low", "a page of %1 is too high", "no %1 is here"]
    return [text for text, isright in {
        "statements are not parted": [len(each[1]) for each in found] == [4, 1],
        "a known text is not found": all(is_known(each[1], each[2], known) for each in found),
        "an unknown text is found": not is_known(["a page of ", " is green"], False, known),
        "a word of nobody is not seen": uncovered("a page of %1 is green", ["a page of "]) ==
                                        ["is", "green"]}.items() if not isright]


if __name__ == "__main__":
    root = Path(sys.argv[1])
    table = re.sub(r'"\s+"', "", (root / TABLE).read_text(encoding="utf-8"))
    patterns = [re.sub(r"\\(.)", r"\1", text) for text in
                re.findall(r'QT_TRANSLATE_NOOP\(\s*"pagestack::Reasons",\s*"((?:[^"\\]|\\.)*)"', table)]
    findings, every = selftest(), []
    for folder in FOLDERS:
        for path in sorted((root / folder).rglob("*")):
            name = str(path.relative_to(root))
            if path.suffix not in (".cpp", ".h") or name == TABLE or name.startswith(COMMANDS):
                continue
            for line, literals, chosen in statements(
                    CODEC_TEXT.sub(lambda row: "\n" * row[0].count("\n"),
                                   path.read_text(encoding="utf-8"))):
                every += literals
                shown = [text for text in literals if WORDS.search(text)
                         and not any(each.search(text) for each in UNSHOWN)]
                if shown and name not in UNSHOWN_FILES and not is_known(shown, chosen, patterns):
                    findings.append(f"{name}:{line}: {shown} is none of the texts in {TABLE}")
    findings += [f"{TABLE}: nobody says {words} of '{pattern}'" for pattern in patterns
                 if (words := uncovered(pattern, every))]
    report(findings, len(patterns))
