#include "engine/log/RunRecord.h"

#include <QJsonDocument>

#include <algorithm>
#include <stdexcept>
#include <utility>
#include <vector>

namespace pagestack {

namespace {

    constexpr qsizetype mostWaitingBytes = 65536;

    QByteArray jsonOf(const QJsonObject& members)
    {
        return QJsonDocument(members).toJson(QJsonDocument::Compact);
    }

    /// The start of an object whose last member, a list, begins.
    QByteArray openedWith(const QJsonObject& members, const char* list)
    {
        return jsonOf(members).chopped(1) + (members.isEmpty() ? "\"" : ",\"") + list + "\":[";
    }

    /// The end of such an object, behind its list.
    QByteArray closedWith(const QJsonObject& members)
    {
        return "\n]" + (members.isEmpty() ? "}" : ',' + jsonOf(members).sliced(1));
    }

} // namespace

void RunRecord::begin(const QJsonObject& members) { put(openedWith(members, "sources")); }

void RunRecord::beginSource(const QJsonObject& members)
{
    put((std::exchange(m_hasSources, true) ? ",\n" : "\n") + openedWith(members, "pages"));
    m_hasPages = false;
}

void RunRecord::addPage(const QJsonObject& page)
{
    put((std::exchange(m_hasPages, true) ? ",\n" : "\n") + jsonOf(page));
}

void RunRecord::endSource(const QJsonObject& members) { put(closedWith(members)); }

void RunRecord::end(const QJsonObject& members) { put(closedWith(members) + '\n'); }

void RunRecord::put(const QByteArray& text)
{
    m_waiting += text;
    if (m_waiting.size() >= mostWaitingBytes)
        flush();
}

void RunRecord::flush()
{
    const QByteArray text = std::exchange(m_waiting, {});
    if (!m_fault.isNull())
        return;
    try {
        m_text.writeAt(m_text.size(),
                       { reinterpret_cast<const std::uint8_t*>(text.constData()),
                         static_cast<std::size_t>(text.size()) });
    } catch (const std::runtime_error& error) {
        m_fault = QString::fromUtf8(error.what());
    }
}

QString RunRecord::saveTo(const QString& path, StagedFile::Existing existing)
{
    flush();
    if (!m_fault.isNull())
        return m_fault;
    try {
        StagedFile file(path);
        std::vector<std::uint8_t> part;
        for (std::uint64_t done = 0; done < m_text.size(); done += part.size()) {
            part.resize(std::min<std::uint64_t>(mostWaitingBytes, m_text.size() - done));
            m_text.readAt(done, part);
            file.write(part);
        }
        file.commit(existing);
        return {};
    } catch (const StagedFile::NameTaken&) {
        throw;
    } catch (const std::runtime_error& error) {
        return QString::fromUtf8(error.what());
    }
}

} // namespace pagestack
