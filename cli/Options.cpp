#include "cli/Options.h"

#include "cli/LogCopy.h"
#include "cli/OptionTable.h"
#include "engine/plan/OutputNames.h"

#include <algorithm>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    /// Walks through the words once; an option may take the word after it.
    class Parser
    {
    public:
        explicit Parser(const QStringList& words)
            : m_words(words)
        {
        }

        Options parse()
        {
            while (m_next < m_words.size())
                takeWord(m_words.at(m_next++));
            for (const auto& [row, value] : m_given)
                if (conversionOption(row->longName) != nullptr) // which override the preset
                    row->apply(m_options, *row, value);
            settleRecord();
            if (m_options.converts())
                refuseIdleOptions();
            return m_options;
        }

    private:
        bool isGiven(QStringView name) const
        {
            return std::ranges::any_of(
                m_given, [&](const auto& given) { return given.first->longName == name; });
        }

        /// One file of one's own, or one beside the log; a preset may ask for that where there is
        /// none.
        void settleRecord()
        {
            bool& isWritten = m_options.conversion.run.writesRecord;
            const bool isBesideLog = isGiven(u"keep-record") && isWritten;
            if (isBesideLog && !m_options.recordFile.isEmpty())
                throw UsageError(u"options --keep-record and --record exclude each other"_s);
            isWritten = !m_options.recordFile.isEmpty()
                || (isWritten && (m_options.leavesLog || isBesideLog));
        }

        /// Who gives an option expects something of it; who turns one off does not.
        void refuseIdleOptions() const
        {
            if (m_options.conversion.run.mirrorsFolders && m_options.outputFolder.isEmpty())
                throw UsageError(u"option --mirror has no effect without --output"_s);
            for (const auto& [row, value] : m_given)
                if (const QString with = idleWith(m_options.conversion, row->longName);
                    !with.isEmpty() && value != u"false"
                    && (value != u"none" || row->longName != u"bilevel"))
                    throw UsageError(
                        u"option --%1 has no effect with %2"_s.arg(row->longName, with));
        }

        void take(const OptionRow& row, const QString& value)
        {
            m_given.emplace_back(&row, value);
            if (conversionOption(row.longName) == nullptr)
                row.apply(m_options, row, value);
        }

        void takeWord(const QString& word)
        {
            if (m_optionsEnded || !word.startsWith(u'-'))
                m_options.sources.append(word);
            else if (word == u"--")
                m_optionsEnded = true;
            else if (word == u"-")
                m_options.pathLists.append(word);
            else if (word.startsWith(u"--"))
                takeLong(word.mid(2));
            else
                takeShort(word.mid(1));
        }

        void takeLong(const QString& word)
        {
            const qsizetype equals = word.indexOf(u'=');
            const QString name = equals < 0 ? word : word.left(equals);
            const OptionRow& row = find(u"--"_s + name, [&](const OptionRow& candidate) {
                return candidate.longName == name;
            });
            if (!row.takesValue() && equals >= 0 && conversionOption(name) == nullptr)
                throw UsageError(u"option --%1 takes no value"_s.arg(name));
            if (!row.takesValue() && equals < 0)
                take(row, {});
            else
                take(row, equals < 0 ? nextWord(u"--"_s + name) : word.mid(equals + 1));
        }

        /// `-rq` is `-r -q`, and `-fpng` is `-f png`.
        void takeShort(const QString& letters)
        {
            for (qsizetype i = 0; i < letters.size(); ++i) {
                const QChar letter = letters.at(i);
                const QString shown = u"-"_s + letter;
                const OptionRow& row = find(shown, [&](const OptionRow& candidate) {
                    return candidate.shortName == letter;
                });
                if (!row.takesValue()) {
                    take(row, {});
                    continue;
                }
                const QString rest = letters.mid(i + 1);
                take(row, rest.isEmpty() ? nextWord(shown) : rest);
                return;
            }
        }

        QString nextWord(const QString& option)
        {
            if (m_next == m_words.size())
                throw UsageError(u"option %1 needs a value"_s.arg(option));
            return m_words.at(m_next++);
        }

        template <typename Matches>
        static const OptionRow& find(const QString& shown, Matches matches)
        {
            const auto row = std::find_if(optionTable().begin(), optionTable().end(), matches);
            if (row == optionTable().end())
                throw UsageError(u"unknown option %1"_s.arg(shown));
            return *row;
        }

        const QStringList& m_words;
        qsizetype m_next = 0;
        bool m_optionsEnded = false;
        Options m_options;
        std::vector<std::pair<const OptionRow*, QString>> m_given; ///< in their order
    };

} // namespace

Options parseOptions(const QStringList& words)
{
    Options options = Parser(words).parse();
    if (options.isQuiet && options.isVerbose)
        throw UsageError(u"options -q and -v exclude each other"_s);
    if (LogCopy::isStandardOutput(options.logFile)) {
        if (options.isVerbose)
            throw UsageError(u"options -v and --log %1 exclude each other"_s.arg(options.logFile));
        options.isQuiet = true; // what is read by another program holds the log alone
    }
    exampleName(options.conversion); // refuses a pattern that gives none
    for (const auto& [what, file] :
         { std::pair(u"record"_s, options.recordFile), std::pair(u"report"_s, options.reportFile) })
        if (LogCopy::isStandardOutput(file))
            throw UsageError(u"option --%1 takes no '%2': the %1 is a file"_s.arg(what, file));
    if (options.conversion.run.writesRecord && options.recordFile.isEmpty() && !options.leavesLog)
        throw UsageError(
            u"option --keep-record has no effect with --no-log; --record names a file"_s);
    if (options.converts() && options.sources.isEmpty() && options.pathLists.isEmpty())
        throw UsageError(u"no SOURCE is given"_s);
    return options;
}

} // namespace pagestack
