#include "engine/settings/Settings.h"

#include "engine/settings/UserDefaults.h"
#include "tests/support/Testing.h"

#include <QCborMap>
#include <QCborValue>
#include <QMetaProperty>

class SettingsTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        QTest::failOnWarning(QRegularExpression(u"."_s));
        m_folder = std::make_unique<QTemporaryDir>();
        m_path = m_folder->filePath(u"store.json"_s);
    }

    void comesBackFromTheStore()
    {
        m_path = m_folder->filePath(u"new/store.json"_s);
        UserDefaults store(m_path);
        Settings settings(&store);
        QCOMPARE(valuesOf(settings), defaults);
        fill(settings, filled);
        store.setBool(u"GONE"_s, true);
        settings.synchronize();
        QVERIFY2(bytesOf(m_path).contains("\n        \"outputType\": 2,\n"), bytesOf(m_path));
        UserDefaults other(m_path);
        QCOMPARE(valuesOf(Settings(&other)), filled);
        other.setObject(u"GONE"_s, {});
        other.setBool(u"ON"_s, true);
        QVERIFY(other.synchronize());

        const auto all = settings.getData().value();
        for (int i = 0; i < 9; ++i) {
            QCOMPARE(all.at(i).first, QLatin1String(field(i).name()));
            QCOMPARE(all.at(i).second, field(i).read(&settings));
        }
        settings.setSeparator(QString()); // ends the list; the rest of what was stored goes
        QCOMPARE(settings.getData(), all.first(4));
        settings.synchronize();
        UserDefaults four(m_path);
        QCOMPARE(valuesOf(Settings(&four)), filled.section(u'|', 0, 3) + nothingElse);
        QVERIFY(four.boolForKey(u"ON"_s) && !four.boolForKey(u"GONE"_s));
    }

    void savesAgainAfterAFailure()
    {
        UserDefaults store(m_path + u"/store.json"_s);
        store.setBool(u"ON"_s, true);
        putBytes(m_path, "a file in the way of the folder");
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"cannot be saved in "_s));
        QVERIFY(!store.synchronize() && store.boolForKey(u"ON"_s));
        QCOMPARE(store.takeTroubles().size(), 1);
        QVERIFY(QFile::remove(m_path));
        QVERIFY(store.synchronize() && store.takeTroubles().isEmpty());
        QVERIFY(UserDefaults(m_path + u"/store.json"_s).boolForKey(u"ON"_s));
    }

    void putsAsideWhatItCannotRead()
    {
        const QByteArrayList contents { "", "[SETTINGS]\noutputType=2\n", "{\"ON\": true", "[1]",
                                        "{\"ON\": 1}" + QByteArray(1 << 20, ' ') + "x" };
        for (qsizetype i = 0; i < contents.size(); ++i) {
            putBytes(m_path, contents[i]);
            QTest::ignoreMessage(QtWarningMsg,
                                 QRegularExpression(u"cannot be read: .* kept in "_s));
            UserDefaults store(m_path);
            QVERIFY(!store.boolForKey(u"ON"_s) && store.takeTroubles().size() == 1);
            const QString number = i == 0 ? u""_s : u"-%1"_s.arg(i + 1);
            const QString kept = m_folder->filePath(u"store-damaged%1.json"_s.arg(number));
            QVERIFY(QFile::exists(kept));
            QCOMPARE(bytesOf(kept), contents[i]);
            store.setBool(u"OFF"_s, true);
            QVERIFY(store.synchronize());
            putBytes(m_path, "what another program left there"); // goes aside; nothing is lost
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"cannot be read: "_s));
            QVERIFY(store.synchronize() && UserDefaults(m_path).boolForKey(u"OFF"_s));
            QVERIFY(QFile::remove(m_folder->filePath(u"store-damaged-%1.json"_s.arg(i + 2))));
        }
    }

    void takesOverTheIniFileOnce()
    {
        m_path = m_folder->filePath(u"store.ini"_s);
        putBytes(
            m_path,
            "[General]\nON=true\n; a=b\nodd line\n\n[SETTINGS]\r\noutputType = 2\n"
            "isSetCurrentAsDefaultOutputFolderPath=true\njpegQuality=@Variant(\\0\\0\\0\\x1\\x1)\n"
            "outputFolderPath=\"/a, \\\"b\\\\;\\x263a\xc3\xa9\"\nseparator=@@_\\x\\\n");
        m_path = m_folder->filePath(u"store.json"_s);
        UserDefaults store(m_path);
        QVERIFY(store.boolForKey(u"ON"_s));
        Settings settings(&store);
        QCOMPARE(valuesOf(settings),
                 u"2|true|false|/a, \"b\\;\u263a\u00e9|@_"_s + QChar() + u"\\|10|0|false|false"_s);
        settings.setSeparator(u""_s);
        settings.synchronize();
        UserDefaults again(m_path);
        QCOMPARE(Settings(&again).separator(), u""_s);
    }

    void takesOverADictionary()
    {
        const QString flag = u"isSetCurrentAsDefaultOutputFolderPath"_s;
        const QString folder = u"outputFolderPath"_s;
        Settings settings(nullptr);
        fill(settings, filled);
        settings.setData({});
        settings.setData(QVariantList { 1, 2 });
        QCOMPARE(valuesOf(settings), filled); // neither is a dictionary
        for (const auto& [data, firstFour] : QList<std::pair<QVariantMap, QString>> {
                 { { { folder, u"/o"_s }, { flag, true } }, u"0|true|false|/o"_s },
                 { { { folder, u"/o"_s }, { flag, false } }, u"0|false|false|"_s },
                 { { { folder, u""_s }, { flag, true } }, u"0|false|false|"_s },
                 { { { u"outputType"_s, u"3"_s }, { u"new"_s, 1 } },
                   u"3|false|false|(null)"_s } }) {
            settings.setData(data);
            QCOMPARE(valuesOf(settings), firstFour + nothingElse);
            QVERIFY(settings.getData() && !settings.outputFolderPath().isNull());
        }
    }

    void comesBackFromACoder()
    {
        Settings settings(nullptr);
        fill(settings, u"2|false|false|/o|(null)|-3|7|true|true"_s); // no folder rule here
        QByteArray whole;
        QDataStream out(&whole, QIODevice::WriteOnly);
        out.setByteOrder(QDataStream::LittleEndian); // neither used nor changed
        settings.encodeWithCoder(out);
        QCOMPARE(out.byteOrder(), QDataStream::LittleEndian);
        QDataStream in(whole);
        Settings decoded(nullptr);
        QVERIFY(decoded.initWithCoder(in) && in.atEnd());
        QCOMPARE(valuesOf(decoded), valuesOf(settings));

        const QCborMap record { { u"later"_s, u"of a later version"_s },
                                { u"outputType"_s, u"not a number"_s },
                                { u"tiffCompressionIndex"_s, 4 } };
        QDataStream partly(framed(record.toCborValue().toCbor()));
        QVERIFY(decoded.initWithCoder(partly));
        const QString partial = u"0|false|false|(null)|(null)|0|4|false|false"_s;
        QCOMPARE(valuesOf(decoded), partial);
        // A false length; then false counts, a text that is not UTF-8, an array, nesting.
        QByteArrayList damaged { QByteArray::fromHex("7ffffffe"),
                                 framed("\x80"),
                                 framed(QByteArray::fromHex("bbffffffffffffffff")),
                                 framed(QByteArray::fromHex("a161617b7fffffffffffffff")),
                                 framed("\xa1\x61\x61\x61\xff"),
                                 framed(QByteArray(100000, '\x81')) };
        for (qsizetype length = 0; length < whole.size(); ++length)
            damaged += whole.first(length);
        for (const QByteArray& bytes : damaged) {
            QDataStream stream(bytes);
            QVERIFY2(!decoded.initWithCoder(stream) && stream.status() != QDataStream::Ok,
                     bytes.toHex());
            QCOMPARE(valuesOf(decoded), partial);
        }
    }

private:
    /// As a coder holds a record.
    static QByteArray framed(const QByteArray& record)
    {
        QByteArray bytes;
        QDataStream stream(&bytes, QIODevice::WriteOnly);
        stream << record;
        return bytes;
    }
    /// The first property is QObject's own.
    static QMetaProperty field(int i) { return Settings::staticMetaObject.property(i + 1); }
    /// The nine fields in their order, null texts told from empty ones.
    static QString valuesOf(const Settings& settings)
    {
        QStringList values;
        for (int i = 0; i < 9; ++i) {
            const QString text = field(i).read(&settings).toString();
            values += text.isNull() ? u"(null)"_s : text;
        }
        return values.join(u'|');
    }
    static void fill(Settings& settings, const QString& values)
    {
        for (int i = 0; i < 9; ++i) {
            const QString value = values.section(u'|', i, i);
            QVERIFY(field(i).write(&settings, value == u"(null)" ? QString() : u""_s + value));
        }
    }

    const QString defaults = u"0|true|true|||10|0|false|false"_s;
    /// The texts are such as a text file must quote.
    const QString filled
        = u"2|true|false| ; \"C:\\=\u00fc \U0001f600, |@Invalid()\n\t|-3|7|true|true"_s;
    const QString nothingElse = u"|(null)|10|0|false|false"_s;
    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_path;
};

QTEST_GUILESS_MAIN(SettingsTest)
#include "SettingsTest.moc"
