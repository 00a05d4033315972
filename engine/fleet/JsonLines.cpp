#include "engine/fleet/JsonLines.h"

#include <QJsonDocument>

#include <cstdio>

#include <array>
#include <stdexcept>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    [[noreturn]] void refuse(const QString& path, const QString& why)
    {
        throw std::runtime_error(u"%1: %2"_s.arg(path, why).toStdString());
    }

} // namespace

QByteArray jsonLine(const QJsonObject& members)
{
    return QJsonDocument(members).toJson(QJsonDocument::Compact) + '\n';
}

JsonLines::JsonLines(const QString& path)
    : m_file(path)
    , m_path(path)
{
    const bool isOpen
        = path == u"-" ? m_file.open(stdin, QIODevice::ReadOnly) : m_file.open(QIODevice::ReadOnly);
    if (!isOpen)
        refuse(path, m_file.errorString());
}

std::optional<QJsonObject> JsonLines::next()
{
    while (true) {
        const qint64 start = m_file.pos();
        const QByteArray line = nextLine();
        if (m_file.error() != QFileDevice::NoError)
            refuse(m_path, m_file.errorString());
        if (line.isEmpty())
            return std::nullopt;
        if (line.size() >= mostBytes)
            refuse(m_path, u"a line is too long"_s);
        const QJsonDocument document = QJsonDocument::fromJson(line);
        if (document.isObject()) {
            m_offset = start;
            return document.object();
        }
        m_damaged += line == "\n" ? 0 : 1;
    }
}

/// Up to `mostBytes` of it. QIODevice would make room for so many each time.
QByteArray JsonLines::nextLine()
{
    QByteArray line;
    std::array<char, 8192> part {};
    while (line.size() < mostBytes && !line.endsWith('\n')) {
        const qint64 size = m_file.readLine(part.data(), part.size());
        if (size <= 0)
            break;
        line.append(part.data(), size);
    }
    return line;
}

void JsonLines::seek(qint64 offset)
{
    if (m_file.pos() != offset && !m_file.seek(offset)) // which would empty its buffer
        refuse(m_path, m_file.errorString());
}

} // namespace pagestack
