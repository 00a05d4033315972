#include "engine/fleet/JsonLines.h"
#include "engine/fleet/RecordSort.h"
#include "engine/fleet/Shard.h"
#include "engine/threads/Capacity.h"
#include "tests/support/Testing.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include <random>

using namespace Qt::StringLiterals;

namespace pagestack {

/// The formats and algorithms of runs in many parts.
class FleetTest : public QObject
{
    Q_OBJECT

private slots:
    /// A record lost or doubled where a part ends, or parts merged in a wrong order.
    void sortsMoreThanMemoryHolds()
    {
        std::mt19937 random(7);
        for (const std::size_t most : { std::size_t { 1 }, std::size_t { 7 }, std::size_t { 5000 },
                                        std::size_t { 20'000 } }) {
            RecordSort<std::uint32_t> sort(most);
            std::vector<std::uint32_t> wanted(most == 1 ? 90 : 13'000);
            for (std::uint32_t& value : wanted) {
                value = static_cast<std::uint32_t>(random() % 5000);
                sort.add(value);
            }
            std::ranges::sort(wanted);
            std::vector<std::uint32_t> got;
            sort.forEach([&](std::uint32_t value) { got.push_back(value); });
            QCOMPARE(got, wanted);
        }
    }

    /// A line cut off by a kill that hides the next one, or offsets that lead into another line.
    void readsLinesAroundDamage()
    {
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"lines"_s);
        const QByteArray first = jsonLine({ { u"n"_s, 1 } });
        const QByteArray second = jsonLine({ { u"n"_s, u"zwei\n"_s } });
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(first + "{\"n\":\n\n[3]\n" + second + "{\"n\":4}");
        file.close();
        JsonLines lines(path);
        QCOMPARE(lines.next()->value(u"n"_s), QJsonValue(1));
        QCOMPARE(lines.next()->value(u"n"_s), QJsonValue(u"zwei\n"_s));
        const qint64 offset = lines.offset();
        QCOMPARE(lines.damagedLines(), qint64 { 2 });
        QCOMPARE(lines.next()->value(u"n"_s), QJsonValue(4)); // complete, but for its line end
        QVERIFY(!lines.next());
        lines.seek(offset);
        QCOMPARE(lines.next()->value(u"n"_s), QJsonValue(u"zwei\n"_s));
        QVERIFY_THROWS_EXCEPTION(std::runtime_error, JsonLines(folder.filePath(u"none"_s)));
    }

    /// A page in no part or in two, or parts that are not even.
    void givesEachPageToOnePart()
    {
        for (const bool isDivisible : { true, false })
            for (const int count : { 1, 3, 16 }) {
                std::mt19937 random(5);
                std::vector<int> sources(400);
                qint64 total = 0;
                for (int& pages : sources) {
                    pages = static_cast<int>(random() % 7 == 0 ? 0 : random() % 40);
                    total += pages;
                }
                if (isDivisible)
                    total += sources.emplace_back(3000); // more than any part
                std::vector<qint64> pagesOf(static_cast<std::size_t>(count), 0);
                qint64 before = 0;
                for (const int pages : sources) {
                    int next = 0;
                    int parts = 0;
                    for (int i = 0; i < count; ++i)
                        if (const auto part
                            = Shard { i, count }.partOf(before, pages, isDivisible, total)) {
                            QCOMPARE(part->from, next);
                            next = part->to;
                            pagesOf[static_cast<std::size_t>(i)] += next - part->from;
                            ++parts;
                        }
                    QCOMPARE(next, pages);
                    QVERIFY(parts == 1 || (isDivisible && pages > 1 && parts > 1));
                    before += pages;
                }
                for (const qint64 pages : pagesOf)
                    QVERIFY2(std::abs(pages - total / count)
                                 <= (isDivisible ? total / count / 50 + 1 : 40),
                             qPrintable(u"%1 of %2"_s.arg(pages).arg(total)));
            }
    }

    /// A limit of a group above that is not seen, or a share of a processor that becomes none.
    void keepsToTheControlGroup()
    {
        const QTemporaryDir root;
        const auto put = [&](const QString& path, const QByteArray& text) {
            const QString whole = root.filePath(path);
            QVERIFY(QDir().mkpath(QFileInfo(whole).path()));
            QFile file(whole);
            QVERIFY(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
        };
        QCOMPARE(usableCores(root.path(), 8), 8);
        QVERIFY(!memoryLimitBytes(root.path()));
        put(u"proc/self/cgroup"_s, "0::/slice/job\n");
        put(u"sys/fs/cgroup/slice/job/cpu.max"_s, "max 100000\n");
        put(u"sys/fs/cgroup/slice/cpu.max"_s, "250000 100000\n");
        put(u"sys/fs/cgroup/slice/job/memory.max"_s, "max\n");
        put(u"sys/fs/cgroup/slice/memory.max"_s, "160000000\n");
        QCOMPARE(usableCores(root.path(), 8), 3);
        QCOMPARE(usableCores(root.path(), 2), 2);
        QCOMPARE(memoryLimitBytes(root.path()), std::optional<std::uint64_t>(160'000'000));
        put(u"sys/fs/cgroup/slice/cpu.max"_s, "5000 100000\n");
        QCOMPARE(usableCores(root.path(), 8), 1);
        put(u"proc/self/cgroup"_s, "5:cpu,cpuacct:/job\n7:memory:/job\n");
        put(u"sys/fs/cgroup/cpu/job/cpu.cfs_quota_us"_s, "200000\n");
        put(u"sys/fs/cgroup/cpu/job/cpu.cfs_period_us"_s, "100000\n");
        put(u"sys/fs/cgroup/memory/job/memory.limit_in_bytes"_s, "9223372036854771712\n");
        QCOMPARE(usableCores(root.path(), 8), 2);
        QVERIFY(!memoryLimitBytes(root.path()));
        QCOMPARE(jobsWithin(8, 160'000'000), 6);
        QCOMPARE(jobsWithin(8, 1), 1);
        QCOMPARE(jobsWithin(8, {}), 8);
    }
};

} // namespace pagestack

QTEST_GUILESS_MAIN(pagestack::FleetTest)
#include "FleetTest.moc"
