#include "filelist/ListFilter.h"

#include "filelist/FileItem.h"

#include <QRegularExpression>

#include <algorithm>
#include <limits>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    /// The words of `text`, without the quotation marks round those that have blanks.
    QStringList wordsOf(const QString& text)
    {
        QStringList words { QString() };
        bool isQuoted = false;
        for (const QChar character : text) {
            if (character == u'"')
                isQuoted = !isQuoted;
            else if (character.isSpace() && !isQuoted)
                words.append(QString());
            else
                words.last().append(character);
        }
        words.removeAll(QString());
        return words;
    }

    /// A thousand each, as the sizes of the list.
    double unitNamed(const QString& name)
    {
        static const QString units = u"KMGT"_s;
        double unit = 1;
        for (qsizetype i = 0; i <= units.indexOf(name.left(1).toUpper()) && !name.isEmpty(); ++i)
            unit *= 1000;
        return unit;
    }

    /// Above every number where the item does not know it.
    double sizeOf(const FileItem& item)
    {
        return item.size() == std::numeric_limits<int>::max()
            ? std::numeric_limits<double>::infinity()
            : item.size();
    }

    bool isRelated(double value, const QString& relation, double number)
    {
        if (value == number)
            return relation.contains(u'=');
        return relation.startsWith(value < number ? u'<' : u'>');
    }

} // namespace

ListFilter::ListFilter(const QString& text, RowGroup group)
    : m_group(group)
{
    for (const QString& word : wordsOf(text))
        addWord(word);
}

void ListFilter::addWord(QString word)
{
    Term term;
    term.isExcluded = word.size() > 1 && word.startsWith(u'-');
    if (term.isExcluded)
        word.remove(0, 1);
    static const QRegularExpression comparison(
        u"^(pages|size|type)(<=|>=|<|>|=|:)(\\d+(?:\\.\\d+)?)?([kmgt]?b?)(.*)$"_s,
        QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch match = comparison.match(word);
    const QString subject = match.captured(1).toLower();
    if (!match.hasMatch()) {
        term.subject = word.contains(u'/') ? Subject::Path : Subject::Name;
        term.text = word;
    } else if (subject == u"type"_s) {
        term.subject = Subject::Type;
        term.text = word.sliced(match.capturedEnd(2));
        if (term.text.isEmpty())
            return;
    } else {
        if (match.captured(3).isEmpty() || !match.captured(5).isEmpty())
            return;
        term.subject = subject == u"pages"_s ? Subject::Pages : Subject::Size;
        term.relation = match.captured(2).replace(u':', u'=');
        term.number = match.captured(3).toDouble() * unitNamed(match.captured(4));
    }
    m_terms.append(term);
}

bool ListFilter::accepts(const FileItem& item, RowStatus::State state) const
{
    return isInGroup(state, m_group) && std::ranges::all_of(m_terms, [&](const Term& term) {
               return holds(term, item) != term.isExcluded;
           });
}

bool ListFilter::holds(const Term& term, const FileItem& item)
{
    switch (term.subject) {
    case Subject::Name:
        return item.name().contains(term.text, Qt::CaseInsensitive);
    case Subject::Path:
        return item.path().contains(term.text, Qt::CaseInsensitive);
    case Subject::Type:
        return item.type().compare(term.text, Qt::CaseInsensitive) == 0;
    case Subject::Pages:
        return isRelated(item.pages(), term.relation, term.number);
    case Subject::Size:
        return isRelated(sizeOf(item), term.relation, term.number);
    }
    return true;
}

} // namespace pagestack
