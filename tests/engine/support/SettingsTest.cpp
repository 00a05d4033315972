#include "engine/settings/Settings.h"

#include "engine/settings/KeyedCoder.h"
#include "engine/support/UserDefaults.h"

#include <QFile>
#include <QMetaProperty>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <stdexcept>

using namespace Qt::StringLiterals;
using namespace pagestack;

class SettingsTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        QTest::failOnWarning(QRegularExpression(u"."_s));
        m_folder = std::make_unique<QTemporaryDir>();
        m_path = m_folder->filePath(u"store.ini"_s);
    }

    void comesBackFromTheStore()
    {
        UserDefaults store(m_path);
        Settings settings(&store);
        QCOMPARE(valuesOf(settings), defaults);
        fill(settings, filled);
        store.setBool(u"OFF"_s, false);
        store.setBool(u"GONE"_s, true);
        store.setObject(u"GONE"_s, {});
        settings.synchronize();
        QFile file(m_path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray text = file.readAll();
        QVERIFY2(text.startsWith("[General]\nOFF=false\n\n[SETTINGS]\n"), text);
        QVERIFY2(text.contains("\noutputType=2\n") && text.count('\n') == 13, text);
        UserDefaults reopened(m_path);
        QCOMPARE(valuesOf(Settings(&reopened)), filled);

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

        UserDefaults blocked(m_path + u"/below a plain file"_s);
        blocked.setBool(u"ON"_s, true);
        QVERIFY(!blocked.synchronize() && blocked.boolForKey(u"ON"_s));
    }

    void makesNoObjects()
    {
        const QString key = u"separator"_s;
        for (const QByteArray value :
             { "@Variant(\\0)", " \"@Var\"iant()", "a, \"\" \\Q@Variant(\\0)", "\\x@Variant()",
               "\\\r\n\"\"@Variant()", "\\x40Variant()", "\\x10040Variant()", "\\100Variant()",
               "@DateTime()", "@\\qVariant()", "\xEF\xBB\xBF@Variant()", "\xEF\xBB, \xBF@Variant()",
               "\xEF\xBB\xBF\"@Variant()\"", "\"a\nb=@Variant()\"" }) {
            QFile file(m_path);
            QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
            file.write("[SETTINGS]\nseparator=" + value + '\n');
            file.close();
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"are damaged and"_s));
            UserDefaults store(m_path);
            QVERIFY2(!store.objectForKey(u"SETTINGS"_s).isValid() && !store.synchronize(), value);
        }
        QVERIFY(QFile::remove(m_path));
        int copies = 0;
        for (const QString& text :
             { u"@Variant(\\0)"_s, u"\u0140@Variant()"_s, u"\u7840\\x40"_s,
               u"\u00e9"_s + QChar() + u"40@DateTime()"_s, u"/me@Variant(1)"_s, u" @DateTime()"_s,
               u"a=@@, \\@Variant()"_s, u"/=@DateTime(), ,@Variant()"_s, u"\\x40"_s,
               u"a\n\"=@Variant()"_s, u"\uFEFB@Variant()"_s }) {
            UserDefaults(m_path).setObject(key, QChar(QChar::ByteOrderMark) + text);
            // Of a file that it wrote Qt remembers the values.
            const QString copy = m_folder->filePath(QString::number(++copies));
            QVERIFY(QFile::copy(m_path, copy));
            QCOMPARE(UserDefaults(copy).objectForKey(key), text);
        }
    }

    void takesOverADictionary()
    {
        const QString flag = u"isSetCurrentAsDefaultOutputFolderPath"_s;
        const QString folder = u"outputFolderPath"_s;
        const QList<std::pair<QVariantMap, QString>> rows {
            { { { folder, u"/o"_s }, { flag, true } }, u"0|true|false|/o"_s },
            { { { folder, u"/o"_s }, { flag, false } }, u"0|false|false|"_s },
            { { { folder, u""_s }, { flag, true } }, u"0|false|false|"_s },
            { { { flag, true } }, u"0|false|false|(null)"_s },
            { { { u"outputType"_s, u"3"_s }, { u"unknown"_s, 1 } }, u"3|false|false|(null)"_s }
        };
        for (const auto& [data, firstFour] : rows) {
            Settings settings(nullptr);
            fill(settings, filled);
            settings.setData({});
            settings.setData(QVariantList { 1, 2 });
            QCOMPARE(valuesOf(settings), filled); // neither is a dictionary
            settings.setData(data);
            QCOMPARE(valuesOf(settings), firstFour + nothingElse);
            QVERIFY(settings.getData() && !settings.outputFolderPath().isNull());
        }
    }

    void announcesChangesOnly()
    {
        const QStringList others = u"42|false|false|(null)|(null)|42|42|true|true"_s.split(u'|');
        for (int i = 0; i < 9; ++i) {
            Settings settings(nullptr);
            QSignalSpy spy(&settings, field(i).notifySignal());
            QStringList values = defaults.split(u'|');
            values[i] = others[i];
            fill(settings, values.join(u'|'));
            fill(settings, values.join(u'|'));
            QCOMPARE(spy.size(), 1);
            QCOMPARE(spy.first().first(), field(i).read(&settings));
            QCOMPARE(valuesOf(settings), values.join(u'|')); // and no other field
        }
    }

    void logsTheReasonOfAnObserver()
    {
        UserDefaults store(m_path);
        Settings settings(&store);
        connect(&settings, &Settings::outputFolderPathChanged, this, [](const QString& folder) {
            if (!folder.isNull())
                throw std::runtime_error("no such folder");
        });
        QTest::ignoreMessage(QtWarningMsg, "Error in (Settings=>setData:) : no such folder");
        settings.setData(QVariantMap { { u"outputFolderPath"_s, u"/x"_s } });
        QCOMPARE(valuesOf(settings), u"0|false|false|/x||10|0|false|false"_s);
        settings.setOutputFolderPath(QString());
        QTest::ignoreMessage(QtWarningMsg, "Error in (Settings=>getData) : no such folder");
        settings.synchronize();
        QVERIFY(!store.objectForKey(u"SETTINGS"_s).isValid());
    }

    void comesBackFromACoder()
    {
        Settings settings(nullptr);
        fill(settings, u"2|false|false|/o|(null)|-3|7|true|true"_s); // no folder rule here
        QByteArray bytes;
        QDataStream out(&bytes, QIODevice::WriteOnly);
        out.setVersion(QDataStream::Qt_4_0); // neither used nor changed, nor is the byte order
        out.setByteOrder(QDataStream::LittleEndian);
        settings.encodeWithCoder(out);
        QVERIFY(out.version() == QDataStream::Qt_4_0
                && out.byteOrder() == QDataStream::LittleEndian);
        QDataStream in(bytes);
        Settings decoded(nullptr);
        QVERIFY(decoded.initWithCoder(in) && in.atEnd());
        QCOMPARE(valuesOf(decoded), valuesOf(settings));

        KeyedEncoder encoder;
        encoder.encodeObject(u"later"_s, "of a later version");
        encoder.encodeObject(u"not a number"_s, "outputType");
        encoder.encodeInt(4, "tiffCompressionIndex");
        QDataStream partly(&bytes, QIODevice::ReadWrite);
        QVERIFY(encoder.writeTo(partly) && partly.device()->reset());
        QVERIFY(decoded.initWithCoder(partly));
        QCOMPARE(valuesOf(decoded), u"0|false|false|(null)|(null)|0|4|false|false"_s);
    }

    void refusesADamagedStream()
    {
        QByteArray whole;
        QDataStream out(&whole, QIODevice::WriteOnly);
        Settings(nullptr).encodeWithCoder(out);
        QList<QByteArray> damaged { QByteArray(whole).replace("outputTypei", "outputTypez") };
        const qsizetype text = whole.indexOf("separators") + 10;
        // Another mark, false counts of entries and bytes of a key and a text, an odd length.
        const QList<qsizetype> places { 0, 4, 8, text, text };
        const QByteArray wrong = QByteArray::fromHex("6e6f7065ffffffff7fffffff7ffffffe00000005");
        for (int i = 0; i < 5; ++i)
            damaged += QByteArray(whole).replace(places[i], 4, wrong.mid(4 * i, 4));
        for (qsizetype length = 0; length < whole.size(); ++length)
            damaged += whole.first(length);
        for (const QByteArray& bytes : damaged) {
            Settings settings(nullptr);
            fill(settings, filled);
            QDataStream in(bytes);
            QVERIFY2(!settings.initWithCoder(in) && in.status() != QDataStream::Ok, bytes.toHex());
            QCOMPARE(valuesOf(settings), filled);
        }
    }

private:
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
    const QString nothingElse = u"|(null)|0|0|false|false"_s;
    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_path;
};

QTEST_GUILESS_MAIN(SettingsTest)
#include "SettingsTest.moc"
