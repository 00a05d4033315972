#include "engine/fleet/MergedRun.h"

#include "engine/fleet/JsonLines.h"
#include "engine/fleet/LineReplay.h"

#include <algorithm>
#include <deque>
#include <stdexcept>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    [[noreturn]] void refuseFile(const QString& path, const QString& why)
    {
        throw std::runtime_error(u"%1: %2"_s.arg(path, why).toStdString());
    }

    /// The state files, of which some are open at a time: a process may have fewer open files than
    /// there are states.
    class OpenStates
    {
    public:
        explicit OpenStates(const QStringList& paths)
            : m_paths(paths)
        {
        }

        QJsonObject eventAt(int state, qint64 offset)
        {
            JsonLines& lines = opened(state);
            lines.seek(offset);
            const std::optional<QJsonObject> event = lines.next();
            if (!event || lines.offset() != offset)
                refuseFile(m_paths.at(state), u"it was changed meanwhile"_s);
            return *event;
        }

    private:
        static constexpr std::size_t most = 16;

        JsonLines& opened(int state)
        {
            for (std::size_t i = 0; i < m_open.size(); ++i)
                if (m_open[i].first == state) {
                    std::rotate(m_open.begin(), m_open.begin() + qsizetype(i),
                                m_open.begin() + qsizetype(i) + 1);
                    return *m_open.front().second;
                }
            m_open.emplace_front(state, std::make_unique<JsonLines>(m_paths.at(state)));
            if (m_open.size() > most)
                m_open.pop_back();
            return *m_open.front().second;
        }

        const QStringList& m_paths;
        std::deque<std::pair<int, std::unique_ptr<JsonLines>>> m_open; ///< that used last first
    };

    /// A plan with another name in it would be another plan.
    void checkIdentity(const QString& path, const PlanEnd& end)
    {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            refuseFile(path, file.errorString());
        QCryptographicHash hash(QCryptographicHash::Sha256);
        QByteArray waiting; // maybe of the last line
        while (true) {
            const QByteArray part = file.read(qint64 { 1 } << 20);
            if (file.error() != QFileDevice::NoError)
                refuseFile(path, file.errorString());
            if (part.isEmpty())
                break;
            waiting += part;
            const qsizetype size = waiting.lastIndexOf('\n', -2) + 1;
            hash.addData(QByteArrayView(waiting).first(size));
            waiting.remove(0, size);
        }
        if (QString::fromLatin1(hash.result().toHex()) != end.identity)
            refuseFile(path, u"the plan was changed after it was made"_s);
    }

} // namespace

MergedRun::MergedRun(const QString& planPath, const QStringList& statePaths, UseForeign useForeign)
    : m_planPath(planPath)
    , m_plan(planPath)
    , m_states(statePaths)
    , m_useForeign(std::move(useForeign))
{
    checkIdentity(planPath, m_plan.end());
    for (int i = 0; i < m_states.size(); ++i)
        readState(i);
}

bool MergedRun::beginRun(const QJsonObject& event, const QString& path)
{
    if (event.value(u"format") != 1)
        refuseFile(path, u"it is no state of format 1"_s);
    if (event.value(u"plan").toString() != m_plan.end().identity)
        return false;
    ++m_runs;
    const QDateTime start
        = QDateTime::fromString(event.value(u"started").toString(), Qt::ISODateWithMs);
    if (start.isValid() && (!m_started.isValid() || start < m_started))
        m_started = start;
    if (start.isValid() && (!m_ended.isValid() || start > m_ended))
        m_ended = start;
    return true;
}

void MergedRun::readState(int number)
{
    const QString path = m_states.at(number);
    JsonLines lines(path);
    bool isOurs = false;
    Foreign foreign { .state = path, .reason = u"they stand before any run"_s };
    const auto tellForeign = [&] {
        if (foreign.events > 0)
            m_useForeign(foreign);
    };
    while (const std::optional<QJsonObject> event = lines.next()) {
        const QString type = event->value(u"type").toString();
        if (type == u"run") {
            tellForeign();
            isOurs = beginRun(*event, path);
            foreign
                = { .state = path,
                    .reason = u"run %1 is of another plan"_s.arg(event->value(u"id").toString()) };
        } else if (type == u"summary" && isOurs) {
            const QDateTime end
                = QDateTime::fromString(event->value(u"ended").toString(), Qt::ISODateWithMs);
            if (end.isValid() && end > m_ended)
                m_ended = end;
        } else if (type == u"begin" || type == u"page" || type == u"source") {
            const qint64 line = event->value(u"line").toInteger(-1);
            if (!isOurs)
                ++foreign.events;
            else if (line < 0 || line >= m_plan.end().sources)
                m_useForeign({ path, 1, u"the plan has no line %1"_s.arg(line) });
            else
                m_places.add({ .line = static_cast<std::uint64_t>(line),
                               .state = static_cast<std::uint64_t>(number),
                               .offset = static_cast<std::uint64_t>(lines.offset()) });
        }
    }
    tellForeign();
    m_tornLines += lines.damagedLines();
}

void MergedRun::forEach(const std::function<void(const MergedSource& source)>& use)
{
    OpenStates states(m_states);
    std::optional<LineReplay> replay;
    std::uint64_t line = 0;
    const auto begin = [&] {
        replay.reset();
        try {
            if (std::optional<PlanSource> source = m_plan.next())
                replay.emplace(std::move(*source), m_plan.head());
        } catch (const std::invalid_argument& error) {
            refuseFile(m_planPath, QString::fromUtf8(error.what()));
        }
    };
    const auto end = [&] {
        use(replay->result());
        ++line;
        begin();
    };
    begin();
    m_places.forEach([&](const Place& place) {
        while (replay && line < place.line)
            end();
        const int state = static_cast<int>(place.state);
        const QString foreign
            = replay->take(state, states.eventAt(state, static_cast<qint64>(place.offset)));
        if (!foreign.isNull())
            m_useForeign({ m_states.at(state), 1,
                           u"line %1 of the plan: %2"_s.arg(QString::number(line), foreign) });
    });
    while (replay)
        end();
}

} // namespace pagestack
