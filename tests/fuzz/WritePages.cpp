#include "engine/image/PageEncoding.h"
#include "engine/image/TiffDocument.h"
#include "engine/image/tiffwriter/MultiPageTiffWriter.h"
#include "engine/settings/OutputCodes.h"
#include "tests/fuzz/FuzzSupport.h"
#include "tests/support/ImageReaders.h"

#include <QFile>

#include <algorithm>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    constexpr int mostPagesWritten = 3;
    constexpr std::uint64_t largestPageBytes = 256 * 1024;
    constexpr std::size_t choiceBytes = 3;
    const QString sourceName = u"input.tif"_s;

    /// Whether it can be written in no time. A single row may be as long as it likes: what is held
    /// of a page is a few of its rows.
    bool isQuick(const PageImage& page)
    try {
        return page.heightPx() == 1 || isSmall(page, largestPageBytes);
    } catch (const std::runtime_error&) {
        return false;
    }

    struct Choice
    {
        explicit Choice(FuzzInput input)
            : format(input[0] % 7)
            , options { input[2] % 12, input[1] % 6 }
        {
        }
        bool isTogether() const { return format >= 5; }
        bool isEncodedAhead() const { return format == 6; }

        int format;
        SaveOptions options;
    };

    /// What the pages of a written TIFF file must look like; nothing for one that could not be
    /// shown before either.
    using Appearances = std::vector<std::optional<QByteArray>>;

    void checkTiff(const QString& path, const Appearances& expected)
    {
        try {
            const TiffDocument written(path);
            require(written.chainFault().isEmpty(), "a written file has a sound chain of pages");
            require(written.pageCount() == static_cast<int>(expected.size()),
                    "a written file has the pages that were given");
            for (std::size_t i = 0; i < expected.size(); ++i)
                require(!expected[i]
                            || appearance(written.page(static_cast<int>(i))) == expected[i],
                        "a page looks the same in a written TIFF file");
        } catch (const std::runtime_error& refusal) {
            require(false, refusal.what());
        }
    }

    void checkPicture(const QString& path, const PageProperties& page)
    {
        const Picture picture = readPicture(path);
        const bool isTurned = page.orientation >= 5;
        require(picture.width == (isTurned ? page.heightPx : page.widthPx)
                    && picture.height == (isTurned ? page.widthPx : page.heightPx),
                "a written picture is readable and has the size of the upright page");
    }

    void writeApart(const FuzzFolder& folder, const PageImage& page, const Choice& choice,
                    const std::optional<QByteArray>& expected)
    {
        const QString name = u"output"_s + fileExtension(choice.format);
        const QString path = folder.path(name);
        try {
            encodedPage(page.sharedSource(), path, pageEncoding(path), choice.options)->commit();
        } catch (const std::runtime_error& refusal) {
            require(*refusal.what() != '\0', "a refusal has a reason");
            require(folder.names() == QStringList { sourceName }, "a refusal leaves nothing");
            return;
        }
        require(folder.names() == QStringList({ sourceName, name }), "only the output is left");
        if (choice.format == static_cast<int>(OutputType::Tiff))
            checkTiff(path, { expected });
        else
            checkPicture(path, page.source().properties());
        QFile::remove(path);
    }

    EncodedPieces prepared(const TiffDocument& document, int index, const Choice& choice)
    {
        return choice.isEncodedAhead()
            ? encodePieces(document.clone()->page(index).source(),
                           tiffCompressionTag(choice.options.tiffCompressionIndex))
            : EncodedPieces {};
    }

    void writeTogether(const FuzzFolder& folder, const TiffDocument& document,
                       const std::vector<int>& pages, const Appearances& looks,
                       const Choice& choice)
    {
        const QString path = folder.path(u"output.tiff"_s);
        Appearances expected;
        try {
            MultiPageTiffWriter file(path, choice.options.tiffCompressionIndex,
                                     static_cast<int>(pages.size()));
            for (std::size_t i = 0; i < pages.size(); ++i) {
                try {
                    file.append(document.page(pages[i]).sharedSource(),
                                prepared(document, pages[i], choice));
                    expected.push_back(looks[i]);
                } catch (const std::runtime_error&) {
                    continue; // the others still go into the file
                }
            }
            require(file.pageCount() == static_cast<int>(expected.size()), "pages are counted");
            file.finish()->commit();
        } catch (const std::runtime_error& refusal) {
            require(expected.empty(), refusal.what());
            require(folder.names() == QStringList { sourceName }, "a refusal leaves nothing");
            return;
        }
        require(folder.names() == QStringList({ sourceName, u"output.tiff"_s }),
                "only the output is left");
        checkTiff(path, expected);
    }

} // namespace

void writePages(FuzzInput input)
{
    if (input.size() < choiceBytes)
        return;
    const Choice choice(input);
    const FuzzFolder folder;
    const QString path = folder.put(sourceName, input.subspan(choiceBytes));
    std::vector<int> pages;
    Appearances looks;
    std::unique_ptr<TiffDocument> document;
    try {
        document = std::make_unique<TiffDocument>(path);
        const TiffDocument reference(path); // what is read of it is not known to `document`
        for (int index = 0; index < std::min(reference.pageCount(), mostPagesWritten); ++index) {
            const PageImage page = reference.page(index);
            if (!isQuick(page))
                continue;
            pages.push_back(index);
            looks.push_back(appearance(page));
        }
    } catch (const std::runtime_error&) {
        return; // the other targets look at files that cannot be opened
    }
    if (choice.isTogether())
        writeTogether(folder, *document, pages, looks, choice);
    else
        for (std::size_t i = 0; i < pages.size(); ++i)
            writeApart(folder, document->page(pages[i]), choice, looks[i]);
}

} // namespace pagestack
