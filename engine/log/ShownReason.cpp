#include "engine/log/ShownReason.h"

#include <QCoreApplication>
#include <QStringList>

#include <algorithm>
#include <optional>
#include <vector>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    const QString joint = u"; "_s;
    constexpr qsizetype mostParts = 3; ///< of one reason, which holds separators itself

    /// The number of the place for a value that begins at `at`; 0: none does.
    int placeAt(QStringView text, qsizetype at)
    {
        const bool isPlace = text.at(at) == u'%' && at + 1 < text.size() && text.at(at + 1) >= u'1'
            && text.at(at + 1) <= u'9';
        return isPlace ? text.at(at + 1).digitValue() : 0;
    }

    QString filled(const QString& text, const QStringList& values)
    {
        QString result;
        for (qsizetype at = 0; at < text.size(); ++at) {
            if (const int place = placeAt(text, at); place > 0 && place <= values.size()) {
                result += values.at(place - 1);
                ++at;
            } else {
                result += text.at(at);
            }
        }
        return result;
    }

    class Pattern
    {
    public:
        explicit Pattern(const ReasonPattern& pattern)
            : m_source(pattern.text)
            , m_nested(pattern.nested)
            , m_pieces(QString())
        {
            const QString text = QString::fromUtf8(pattern.text);
            for (qsizetype at = 0; at < text.size(); ++at) {
                if (placeAt(text, at) > 0) {
                    m_pieces.append(QString());
                    ++at;
                } else {
                    m_pieces.last() += text.at(at);
                    ++m_letters;
                }
            }
        }

        /// Those of the text itself: of two patterns that fit, the one with more says more.
        qsizetype letters() const { return m_letters; }

        /// None where `reason` is another text.
        std::optional<QString> shown(const QString& reason) const
        {
            std::optional<QStringList> values = valuesIn(reason);
            if (!values)
                return std::nullopt;
            if (m_nested > 0)
                (*values)[m_nested - 1] = shownReason(values->at(m_nested - 1));
            return filled(QCoreApplication::translate("pagestack::Reasons", m_source), *values);
        }

    private:
        std::optional<QStringList> valuesIn(const QString& reason) const
        {
            if (m_pieces.size() == 1)
                return reason == m_pieces.first() ? std::optional(QStringList()) : std::nullopt;
            if (!reason.startsWith(m_pieces.first()) || !reason.endsWith(m_pieces.last()))
                return std::nullopt;
            QStringList values;
            qsizetype at = m_pieces.first().size();
            for (qsizetype i = 1; i < m_pieces.size(); ++i) {
                const QString& piece = m_pieces.at(i);
                const bool isLast = i + 1 == m_pieces.size();
                const qsizetype end
                    = isLast ? reason.size() - piece.size() : reason.indexOf(piece, at);
                if (end <= at)
                    return std::nullopt;
                values.append(reason.sliced(at, end - at));
                // Only at the end there may be several reasons.
                if (!(isLast && piece.isEmpty()) && values.last().contains(joint))
                    return std::nullopt;
                at = end + piece.size();
            }
            return values;
        }

        const char* m_source;
        int m_nested;
        QStringList m_pieces; ///< between the places
        qsizetype m_letters = 0;
    };

    std::optional<QString> shownAsOne(const QString& reason)
    {
        static const std::vector<Pattern> patterns = [] {
            const std::span<const ReasonPattern> all = reasonPatterns();
            std::vector<Pattern> made(all.begin(), all.end());
            std::ranges::stable_sort(made, std::ranges::greater(), &Pattern::letters);
            return made;
        }();
        for (const Pattern& pattern : patterns)
            if (std::optional<QString> text = pattern.shown(reason))
                return text;
        return std::nullopt;
    }

} // namespace

QString shownReason(const QString& reason)
{
    const QStringList parts = reason.split(joint);
    QStringList texts;
    for (qsizetype i = 0; i < parts.size();) {
        std::optional<QString> text;
        qsizetype count = std::min(mostParts, parts.size() - i);
        while (!text && count > 0)
            text = shownAsOne(parts.sliced(i, count--).join(joint));
        texts.append(text.value_or(parts.at(i)));
        i += count + 1;
    }
    return texts.join(joint);
}

} // namespace pagestack
