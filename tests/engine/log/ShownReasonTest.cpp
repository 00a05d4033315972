#include "engine/log/ShownReason.h"

#include "tests/support/Angles.h"
#include "tests/support/Testing.h"
#include "tests/support/TextRows.h"

// What the engine says, in another language.
class ShownReasonTest : public QObject
{
    Q_OBJECT

private slots:
    /// Reasons within others stay English, several in one line are taken for one, a value (a file
    /// called as a word of a reason) is translated, words of a codec get lost.
    void knowsEachPart_data()
    {
        addTextRows(R"(
it is no TIFF file | <it is no TIFF file>
cannot write: No space left on device | <cannot write: No space left on device>
read back, the file is refused: page 3: its tiles are too large | \
    <read back, the file is refused: <page 3: <its tiles are too large>>>
2 of its 9 tiles have no data in the file and are filled with 0 | \
    <2 of its 9 <tiles> have no data in the file and are filled with 0>
tiles leads to the source itself, which a single page must not replace | \
    <tiles leads to the source itself, which a single page must not replace>
the colour map is missing; 1 row of the fax is damaged; what is lost of it is white; Bad code; \
its strips are too large | \
    <the colour map is missing>; <1 row of the fax is damaged; what is lost of it is white>; \
    Bad code; <its strips are too large>
the file is kept as it is, since 2 tags would be lost: A, B | \
    <the file is kept as it is, since <2 tags would be lost: A, B>>
3 % of its samples lie outside of 0 to 1, which is shown | \
    <3 % of its samples lie outside of 0 to 1, which is shown>
page 9, pages 3-7 asked for, the file has 2 | <<page 9, <pages 3-7>> asked for, the file has 2>
name 'a%2' holds a slash | <name 'a%2' <holds a slash>>
it is no | it is no
)");
    }
    void knowsEachPart()
    {
        const auto [reason, shown] = textRow<2>();
        QCOMPARE(shownReason(reason), reason);
        const Angles language;
        QCOMPARE(shownReason(reason), shown);
    }

    /// A pattern whose places are not 1, 2, 3 would lose a value; so would one for which a shorter
    /// one is taken.
    void everyPatternKeepsItsText()
    {
        const Angles language;
        for (const ReasonPattern& pattern : reasonPatterns()) {
            const QString text = QString::fromUtf8(pattern.text);
            QCOMPARE(shownReason(text), u'<' + text + u'>');
        }
    }
};

QTEST_GUILESS_MAIN(ShownReasonTest)
#include "ShownReasonTest.moc"
