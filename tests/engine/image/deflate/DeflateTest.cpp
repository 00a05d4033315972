#include "engine/image/deflate/HuffmanCode.h"
#include "engine/image/deflate/HuffmanDeflate.h"
#include "engine/image/deflate/MatchDeflate.h"
#include "tests/support/Testing.h"

#include <zlib.h>

#include <random>

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes made(std::size_t count, const std::function<int(std::size_t)>& byte)
{
    Bytes bytes(count);
    for (std::size_t i = 0; i < count; ++i)
        bytes[i] = static_cast<std::uint8_t>(byte(i));
    return bytes;
}

/// Symbols as frequent as the numbers of Fibonacci, the worst case for the length of codes.
Bytes fibonacci(std::size_t symbols)
{
    Bytes bytes;
    std::size_t last = 0;
    for (std::size_t symbol = 0, times = 1; symbol < symbols; ++symbol) {
        bytes.insert(bytes.end(), times, static_cast<std::uint8_t>(11 * symbol));
        times += std::exchange(last, times);
    }
    std::shuffle(bytes.begin(), bytes.end(), std::mt19937(1));
    return bytes;
}

/// Runs of one length each that literals keep apart.
Bytes runsOf(std::size_t length)
{
    return made(20 * (length + 2),
                [=](std::size_t i) { return i % (length + 2) == 0 ? static_cast<int>(i) : 7; });
}

/// What zlib makes of a raw deflate stream; empty unless the stream ends with its last byte.
Bytes inflated(const Bytes& stream, std::size_t count)
{
    Bytes bytes(count + 1);
    z_stream codec = {};
    inflateInit2(&codec, -15);
    codec.next_in = const_cast<std::uint8_t*>(stream.data());
    codec.avail_in = static_cast<uInt>(stream.size());
    codec.next_out = bytes.data();
    codec.avail_out = static_cast<uInt>(bytes.size());
    const bool isWhole = inflate(&codec, Z_FINISH) == Z_STREAM_END && codec.avail_in == 0;
    bytes.resize(isWhole ? codec.total_out : 0);
    inflateEnd(&codec);
    return bytes;
}

/// Appends what `coder` makes of `bytes`. Ends the test program when it touches more than it may.
template <typename Coder>
void append(Coder& coder, std::span<const std::uint8_t> bytes, bool endsStream, Bytes& stream)
{
    constexpr std::uint8_t untouched = 0xA5;
    const std::size_t before = stream.size();
    const std::size_t bound = Coder::bound(bytes.size());
    stream.resize(before + bound + 64, untouched);
    const std::size_t size = coder.compress(bytes, endsStream, stream.data() + before);
    const auto end = stream.begin() + static_cast<std::ptrdiff_t>(before + bound);
    if (size > bound || std::count(end, stream.end(), untouched) != 64)
        qFatal("%zu bytes took more than their bound", bytes.size());
    stream.resize(before + size);
}

std::size_t runsSize(const Bytes& bytes)
{
    Bytes stream;
    HuffmanDeflate coder;
    append(coder, bytes, true, stream);
    return stream.size();
}

} // namespace

class DeflateTest : public QObject
{
    Q_OBJECT

private slots:
    void isReadBack_data()
    {
        QTest::addColumn<Bytes>("bytes");
        std::mt19937 random(7);
        std::normal_distribution<> bell(0, 5);
        QTest::newRow("empty") << Bytes();
        QTest::newRow("one byte") << Bytes { 200 };
        QTest::newRow("constant") << Bytes(300'001, 0);
        QTest::newRow("ramp") << made(200'000,
                                      [](std::size_t i) { return static_cast<int>(i / 3); });
        QTest::newRow("random") << made(200'000,
                                        [&](std::size_t) { return static_cast<int>(random()); });
        QTest::newRow("noise") << made(200'000,
                                       [&](std::size_t) { return std::lround(bell(random)); });
        QTest::newRow("rare noise") << made(200'000, [&](std::size_t) {
            return random() % 40 == 0 ? static_cast<int>(random()) : 0;
        });
        QTest::newRow("text") << made(200'000, [&](std::size_t i) {
            return i % 61 == 0 ? static_cast<int>(random() % 9)
                               : 'a' + static_cast<int>(i * i % 61 % 23);
        });
        for (const std::size_t length :
             { 2, 3, 7, 8, 9, 11, 257, 258, 259, 260, 516, 517, 1000, 3277 })
            QTest::addRow("runs of %zu", length) << runsOf(length);
        for (const std::size_t count : { 3, 4, 5, 65'534, 65'535, 65'536, 131'070 })
            QTest::addRow("%zu bytes", count) << Bytes(count, 3);
        QTest::newRow("Fibonacci in one block") << fibonacci(21);
        QTest::newRow("Fibonacci") << fibonacci(26);
    }

    void isReadBack()
    {
        QFETCH(Bytes, bytes);
        HuffmanDeflate runs;
        Bytes stream;
        append(runs, bytes, true, stream);
        QVERIFY(inflated(stream, bytes.size()) == bytes);
        // Parts by several coders are one stream as well.
        MatchDeflate fast(1);
        MatchDeflate small(6);
        for (const std::size_t partBytes : { 50'003, 997 }) {
            stream.clear();
            const std::size_t parts = 1 + std::min<std::size_t>(bytes.size() / partBytes, 40);
            const std::size_t used = std::min(bytes.size(), parts * partBytes);
            for (std::size_t part = 0; part < parts; ++part) {
                const std::size_t start = part * partBytes;
                const auto piece
                    = std::span(bytes).subspan(start, std::min(partBytes, used - start));
                const bool isLast = part + 1 == parts;
                if (part % 4 == 0)
                    append(small, piece, isLast, stream);
                else if (part % 4 == 2)
                    append(fast, piece, isLast, stream);
                else
                    append(runs, piece, isLast, stream);
            }
            QVERIFY(inflated(stream, used)
                    == Bytes(bytes.begin(), bytes.begin() + qsizetype(used)));
        }
    }

    void comesNearTheEntropy()
    {
        std::mt19937 random(3);
        std::normal_distribution<> bell(0, 5);
        const Bytes bytes = made(400'000, [&](std::size_t) { return std::lround(bell(random)); });
        double bits = 0;
        for (int value = 0; value < 256; ++value) {
            const auto times = static_cast<double>(std::count(bytes.begin(), bytes.end(), value));
            bits -= times > 0 ? times * std::log2(times / static_cast<double>(bytes.size())) : 0;
        }
        QVERIFY(static_cast<double>(runsSize(bytes)) < 1.01 * bits / 8);
    }

    void costsLittleOnRunsAndRandomBytes()
    {
        QVERIFY(runsSize(Bytes(1'000'000, 9)) < 2000);
        std::mt19937 random(3);
        const Bytes bytes = made(400'000, [&](std::size_t) { return static_cast<int>(random()); });
        QVERIFY(runsSize(bytes) < 400'050);
    }

    void limitsCodes_data()
    {
        QTest::addColumn<std::vector<std::uint32_t>>("counts");
        QTest::addColumn<int>("longest");
        using Counts = std::vector<std::uint32_t>;
        Counts fibonacciCounts { 1, 1 };
        while (fibonacciCounts.size() < 40)
            fibonacciCounts.push_back(fibonacciCounts.back() + *(fibonacciCounts.end() - 2));
        QTest::newRow("none") << Counts(19) << 7;
        QTest::newRow("one") << Counts { 0, 0, 5, 0 } << 15;
        QTest::newRow("the first") << Counts { 5, 0, 0 } << 15;
        QTest::newRow("two") << Counts { 1, 0, 100'000 } << 15;
        QTest::newRow("all alike") << Counts(286, 1) << 15;
        QTest::newRow("too deep") << fibonacciCounts << 15;
        QTest::newRow("much too deep")
            << Counts(fibonacciCounts.end() - 19, fibonacciCounts.end()) << 7;
    }

    void limitsCodes()
    {
        QFETCH(std::vector<std::uint32_t>, counts);
        QFETCH(int, longest);
        std::vector<std::uint8_t> lengths(counts.size());
        makeCodeLengths(counts, longest, lengths);
        std::uint32_t taken = 0; // of all words of the longest length
        for (std::size_t symbol = 0; symbol < counts.size(); ++symbol) {
            QVERIFY(lengths[symbol] <= longest);
            QVERIFY(counts[symbol] == 0 || lengths[symbol] > 0);
            taken += lengths[symbol] == 0 ? 0
                                          : 1U << static_cast<unsigned>(longest - lengths[symbol]);
            for (std::size_t other = 0; other < symbol; ++other)
                QVERIFY(counts[other] == 0 || counts[other] >= counts[symbol]
                        || lengths[other] >= lengths[symbol]);
        }
        QCOMPARE(taken, 1U << static_cast<unsigned>(longest));
    }
};

QTEST_APPLESS_MAIN(DeflateTest)
#include "DeflateTest.moc"
