#include "engine/image/pixels/ReadAheadRows.h"

#include "tests/support/Testing.h"

#include <latch>

namespace {

/// What a source of 3000 rows does, and what became of it.
struct Script
{
    int width = 600;
    int bandRows = 700;
    int lastRow = 3000; ///< there the source ends, before its height as well
    bool fails = false; ///< it does so with an exception
    int bands = 0; ///< read so far
    bool isGone = false;
    std::set<std::thread::id> readers {};
};

std::uint8_t sampleAt(int x, int y) { return static_cast<std::uint8_t>(x * 7 + y * 13 + y / 256); }

/// Announces each band in the system log, and overwrites it with the next one.
class ScriptedRows : public RowSource
{
public:
    explicit ScriptedRows(Script& script)
        : RowSource(script.width, 3000, {})
        , m_script(script)
    {
    }
    ~ScriptedRows() override { m_script.isGone = true; }

    Band nextBand() override
    {
        m_script.readers.insert(std::this_thread::get_id());
        const int rows = std::min(m_script.bandRows, m_script.lastRow - m_row);
        if (rows == 0 && m_script.fails)
            throw std::runtime_error("the rows are torn");
        ++m_script.bands;
        const qsizetype stride = m_script.width + 5; // with a gap between rows
        m_samples.resize(static_cast<std::size_t>(stride * rows));
        for (int y = 0; y < rows; ++y)
            for (int x = 0; x < m_script.width; ++x)
                m_samples[static_cast<std::size_t>(y * stride + x)] = sampleAt(x, m_row + y);
        m_row += rows;
        return { m_samples.data(), rows, stride };
    }

private:
    Script& m_script;
    std::vector<std::uint8_t> m_samples;
    int m_row = 0;
};

/// What comes out of the rows of `script`: wrong samples, the number of rows and the reason why
/// they end. The claim is given back at row `spareFromRow`, if it is one.
QStringList story(Script& script, SpareThreads& threads, ThreadClaim other, int spareFromRow)
{
    ReadAheadRows rows(std::make_unique<SharedWork>(), std::make_unique<ScriptedRows>(script),
                       threads);
    QStringList told;
    int next = 0;
    const QString reason = reasonOf([&] {
        for (Band band { nullptr, 1, 0 }; band.rows > 0;) {
            if (next >= spareFromRow)
                other.giveBack();
            band = rows.nextBand();
            for (int i = 0; i < band.rows; ++i, ++next)
                for (int x = 0; x < script.width; ++x)
                    if (band.row(i)[x] != sampleAt(x, next))
                        told << u"wrong sample %1 in row %2"_s.arg(x).arg(next);
        }
        next += rows.nextBand().rows; // none
    });
    return told << u"%1 rows"_s.arg(next) << reason;
}

} // namespace

class ReadAheadRowsTest : public QObject
{
    Q_OBJECT

private slots:
    void tellsTheStoryOfItsSource_data()
    {
        // Width, rows of a band, last row, the row from which on a thread is spare, what is then.
        addTextRows(R"(
600      | 700            | 3000     | 0          |
40       | 1              | 3000     | 0          |
300000   | 2              | 7        | 0          |
600      | 300            | 3000     | 1500       |
600      | 300            | 1234     | 0          | fails
600      | 300            | 600      | 600        | fails
600      | 300            | 1234     | 0          |
600      | 300            | 0        | 0          |
)");
    }

    void tellsTheStoryOfItsSource()
    {
        const auto [width, bandRows, lastRow, spareFrom, end] = textRow<5>();
        const int spareFromRow = spareFrom.toInt();
        const Script script { .width = width.toInt(),
                              .bandRows = bandRows.toInt(),
                              .lastRow = lastRow.toInt(),
                              .fails = end == u"fails" };
        const QStringList expected { lastRow + u" rows"_s,
                                     script.fails ? u"the rows are torn"_s : QString() };
        SpareThreads threads(1);
        Script alone = script;
        QCOMPARE(story(alone, threads, threads.take(), script.lastRow + 1), expected);
        QCOMPARE(alone.readers, std::set { std::this_thread::get_id() });
        Script helped = script;
        QCOMPARE(story(helped, threads, threads.take(), spareFromRow), expected);
        QCOMPARE(helped.readers.size(), spareFromRow == 0 ? 1U : 2U);
        QVERIFY(helped.readers != alone.readers);
        QVERIFY(threads.tryTake());
    }

    // The user's thread sleeping while the source has work for two.
    void takesPartWhileItWaits()
    {
        class WorkForTwo : public RowSource
        {
        public:
            explicit WorkForTwo(SharedWork& work)
                : RowSource(8, 2, {})
                , m_work(work)
            {
            }
            Band nextBand() override
            {
                if (m_row == heightPx())
                    return {};
                std::latch bothAreAtIt(2);
                m_work.run([&] { bothAreAtIt.arrive_and_wait(); });
                return { m_samples.data() + 8 * m_row++, 1, 8 };
            }

        private:
            SharedWork& m_work;
            std::array<std::uint8_t, 16> m_samples {};
            int m_row = 0;
        };
        SpareThreads threads(1);
        auto work = std::make_unique<SharedWork>();
        auto source = std::make_unique<WorkForTwo>(*work);
        ReadAheadRows rows(std::move(work), std::move(source), threads);
        QCOMPARE(rows.nextBand().rows, 1);
        QCOMPARE(rows.nextBand().rows, 1);
        QCOMPARE(rows.nextBand().rows, 0);
    }

    void readsNoFurtherThanItsRing()
    {
        // Of very long rows there are fewer.
        for (const auto& [taken, width, most] : { std::array { 1, 200'000, 16 },
                                                  { 2, 200'000, 16 },
                                                  { 5, 200'000, 16 },
                                                  { 3, 2'000'000, 4 } }) {
            Script script { .width = width, .bandRows = 1 };
            SpareThreads threads(1);
            {
                ReadAheadRows rows(std::make_unique<SharedWork>(),
                                   std::make_unique<ScriptedRows>(script), threads);
                for (int i = 0; i < taken; ++i)
                    QCOMPARE(rows.nextBand().rows, 1);
                QVERIFY(!threads.tryTake());
            }
            QVERIFY(script.isGone && threads.tryTake());
            // So many are at hand, of which one is in use, and one waits for room.
            QVERIFY2(script.bands <= taken + most, qPrintable(QString::number(script.bands)));
        }
    }
};

QTEST_APPLESS_MAIN(ReadAheadRowsTest)
#include "ReadAheadRowsTest.moc"
