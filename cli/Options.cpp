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
            for (const CommandName& name : commandNames())
                if (!m_words.isEmpty() && m_words.first() == name.word) {
                    m_options.command = name.command;
                    m_next = 1;
                }
            if (m_options.command == Command::Watch) {
                m_options.onExists = OnExists::Number;
                m_options.leavesLog = false; // of each little run
            }
            while (m_next < m_words.size())
                takeWord(m_words.at(m_next++));
            for (const auto& [row, value] : m_given)
                if (conversionOption(row->longName) != nullptr) // which override the preset
                    row->apply(m_options, *row, value);
            settleRecord();
            if (m_options.doesWork())
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
            if (!row.isFor(m_options.command))
                throw UsageError(u"option --%1 has no place %2"_s.arg(
                    row.longName,
                    m_options.command == Command::Convert ? u"in a conversion"_s
                                                          : u"behind "_s + m_words.first()));
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

    void refuseOddOperands(const Options& options)
    {
        const bool hasSources = !options.sources.isEmpty() || !options.pathLists.isEmpty();
        const bool isMerged = options.command == Command::MergeLogs;
        if ((options.command == Command::Run || isMerged) && options.planFile.isEmpty())
            throw UsageError(u"option --plan is missing"_s);
        if (options.command == Command::Run && hasSources)
            throw UsageError(u"the sources of a run are those of its plan"_s);
        if (isMerged && (options.sources.isEmpty() || !options.pathLists.isEmpty()))
            throw UsageError(options.sources.isEmpty() ? u"no STATE is given"_s
                                                       : u"a STATE is a file, not '-'"_s);
        if (options.command != Command::Run && !hasSources)
            throw UsageError(u"no SOURCE is given"_s);
        if (options.command == Command::Watch
            && (options.sources.size() != 1 || options.outputFolder.isEmpty()))
            throw UsageError(options.outputFolder.isEmpty() ? u"option --output is missing"_s
                                                            : u"one folder can be watched"_s);
        if (options.command == Command::Plan && options.onExists == OnExists::Number)
            throw UsageError(
                u"a plan cannot number outputs, as its names do not depend on what is there"_s);
        if (!options.stateFile.isEmpty() && options.onExists == OnExists::Number
            && options.command != Command::Watch)
            throw UsageError(u"options --resume and --on-exists number exclude each other"_s);
        if (options.isJson && options.isVerbose)
            throw UsageError(u"options -v and --json exclude each other"_s);
        if (options.isJson && LogCopy::isStandardOutput(options.logFile))
            throw UsageError(
                u"options --json and --log %1 exclude each other"_s.arg(options.logFile));
    }

} // namespace

const std::vector<CommandName>& commandNames()
{
    static const std::vector<CommandName> names {
        { u"plan"_s, Command::Plan, u"SOURCE..."_s,
          u"prints a plan: each source with its pages and the names of its outputs"_s },
        { u"run"_s, Command::Run, u"--plan FILE"_s,
          u"converts the sources of a plan, or a part of them"_s },
        { u"merge-logs"_s, Command::MergeLogs, u"--plan FILE STATE..."_s,
          u"says whether all of a plan was done exactly once, by the states of its runs"_s },
        { u"watch"_s, Command::Watch, u"FOLDER -o DIR"_s,
          u"converts what comes into a folder, and moves it to its sub-folder 'done' or 'failed'"_s },
    };
    return names;
}

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
    options.isQuiet = options.isQuiet || options.isJson;
    exampleName(options.conversion); // refuses a pattern that gives none
    for (const auto& [what, file] :
         { std::pair(u"record"_s, options.recordFile), std::pair(u"report"_s, options.reportFile),
           std::pair(u"resume"_s, options.stateFile), std::pair(u"failed"_s, options.failedFile) })
        if (LogCopy::isStandardOutput(file))
            throw UsageError(u"option --%1 takes no '%2': the %1 is a file"_s.arg(what, file));
    if (options.conversion.run.writesRecord && options.recordFile.isEmpty() && !options.leavesLog)
        throw UsageError(
            u"option --keep-record has no effect with --no-log; --record names a file"_s);
    if (options.doesWork())
        refuseOddOperands(options);
    return options;
}

} // namespace pagestack
