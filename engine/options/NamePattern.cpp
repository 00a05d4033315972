#include "engine/options/NamePattern.h"

#include "engine/options/ConversionOptions.h"
#include "engine/support/Paths.h"

#include <QStringList>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    constexpr int mostDigits = 20;

    const QString& fieldNames()
    {
        static const QString names = u"stem|sep|page|pages|folder|parent|n"_s;
        return names;
    }

    [[noreturn]] void refuse(const QString& pattern, const QString& reason)
    {
        throw OptionError(u"name '%1' %2"_s.arg(pattern, reason));
    }

    QString padded(int number, int digits)
    {
        return QString::number(number).rightJustified(digits, u'0');
    }

} // namespace

const QString& NamePattern::usual()
{
    static const QString text = u"{stem}{sep}{page}"_s;
    return text;
}

NamePattern::NamePattern(const QString& text)
{
    if (text.contains(u'/'))
        refuse(text, u"holds a slash"_s);
    if (!isPath(text))
        refuse(QString(text).remove(QChar::Null), u"is no UTF-8 text"_s);
    qsizetype at = 0;
    while (at < text.size()) {
        const qsizetype open = text.indexOf(u'{', at);
        const QString plain = text.sliced(at, (open < 0 ? text.size() : open) - at);
        if (plain.contains(u'}'))
            refuse(text, u"has a '}' without a '{'"_s);
        if (!plain.isEmpty())
            m_parts.push_back({ plain });
        if (open < 0)
            return;
        const qsizetype close = text.indexOf(u'}', open);
        if (close < 0)
            refuse(text, u"has a '{' without a '}'"_s);
        m_parts.push_back(field(text, QStringView(text).sliced(open + 1, close - open - 1)));
        at = close + 1;
    }
}

NamePattern::Part NamePattern::field(const QString& pattern, QStringView inner) const
{
    const qsizetype colon = inner.indexOf(u':');
    const QString name = inner.first(colon < 0 ? inner.size() : colon).toString();
    Part part { name, true, 0 };
    if (!fieldNames().split(u'|').contains(name))
        refuse(
            pattern,
            u"has {%1}, which is none of {%2}"_s.arg(inner, fieldNames()).replace(u'|', u"} {"_s));
    if (colon < 0)
        return part;
    try {
        if (name == u"page" || name == u"pages" || name == u"n") {
            part.digits = numberOf(inner.sliced(colon + 1).toString(), 1, mostDigits, name);
            return part;
        }
    } catch (const OptionError&) {
        // The same for all.
    }
    refuse(pattern,
           u"has {%1}; digits from 1 to %2 go with {page}, {pages} and {n}"_s.arg(inner).arg(
               mostDigits));
}

QString NamePattern::filled(const Values& values) const
{
    QString name;
    for (const Part& part : m_parts) {
        const int digits = std::max(part.digits, 1);
        if (!part.isField)
            name += part.text;
        else if (part.text == u"stem")
            name += values.stem;
        else if (part.text == u"sep")
            name += values.page == 0 ? QString() : values.separator;
        else if (part.text == u"page" && values.page > 0)
            name += padded(values.page, part.digits > 0 ? part.digits : values.digits);
        else if (part.text == u"pages")
            name += padded(values.pages, digits);
        else if (part.text == u"folder")
            name += values.folder;
        else if (part.text == u"parent")
            name += values.parent;
        else if (part.text == u"n")
            name += padded(values.running, digits);
    }
    return name.replace(u':', u'-');
}

bool NamePattern::has(QStringView field) const
{
    return std::ranges::any_of(
        m_parts, [&](const Part& part) { return part.isField && part.text == field; });
}

bool NamePattern::hasPlainPage() const
{
    return std::ranges::any_of(m_parts, [](const Part& part) {
        return part.isField && part.text == u"page" && part.digits == 0;
    });
}

} // namespace pagestack
