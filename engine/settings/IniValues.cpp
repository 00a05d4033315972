#include "engine/settings/IniValues.h"

#include <QFile>

#include <optional>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    constexpr qint64 mostBytes = 65536;

    bool isHexDigit(QChar sign) { return QStringView(u"0123456789abcdefABCDEF").contains(sign); }

    /// The sign that the escape at `at`, behind its backslash, stands for. Moves `at` behind it.
    QChar unescaped(QStringView text, qsizetype& at)
    {
        const QChar letter = text.at(at++);
        if (letter != u'x') {
            const qsizetype place = QStringView(u"abfnrtv0").indexOf(letter);
            return place < 0 ? letter : QChar(u"\a\b\f\n\r\t\v\0"[place]);
        }
        const qsizetype begin = at;
        while (at < text.size() && at - begin < 4 && isHexDigit(text.at(at)))
            ++at;
        return QChar(text.sliced(begin, at - begin).toUShort(nullptr, 16));
    }

    std::optional<QString> plainText(QStringView value)
    {
        if (value.size() > 1 && value.startsWith(u'"') && value.endsWith(u'"'))
            value = value.sliced(1, value.size() - 2);
        if (value.startsWith(u"@@"))
            value = value.sliced(1);
        else if (value.startsWith(u'@'))
            return std::nullopt;
        QString text;
        for (qsizetype at = 0; at < value.size();) {
            const QChar sign = value.at(at++);
            const bool isEscape = sign == u'\\' && at < value.size();
            text += isEscape ? unescaped(value, at) : sign;
        }
        return text;
    }

} // namespace

QJsonObject readIniValues(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QString text = QString::fromUtf8(file.read(mostBytes));
    QJsonObject values;
    QString section = u"General"_s;
    for (const QStringView& each : QStringView(text).split(u'\n')) {
        const QStringView line = each.trimmed();
        const qsizetype equals = line.indexOf(u'=');
        if (line.startsWith(u'[') && line.endsWith(u']')) {
            section = line.sliced(1, line.size() - 2).toString();
        } else if (equals > 0 && !line.startsWith(u';')) {
            const QString key = line.first(equals).trimmed().toString();
            const auto value = plainText(line.sliced(equals + 1).trimmed());
            if (value && section == u"General") {
                values.insert(key, *value);
            } else if (value) {
                QJsonObject group = values.value(section).toObject();
                group.insert(key, *value);
                values.insert(section, group);
            }
        }
    }
    return values;
}

} // namespace pagestack
