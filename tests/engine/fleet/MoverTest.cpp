#include "engine/fleet/SourceMover.h"
#include "tests/support/Testing.h"

#include <QFile>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;

namespace pagestack {

/// A file that comes to the name of one that is put away, at the last moment, is neither moved in
/// its place nor removed.
class MoverTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        write(path(u"a.tif"_s), "old");
        m_state = *fileState(QFile::encodeName(path(u"a.tif"_s)));
        QVERIFY(QFile::rename(path(u"a.tif"_s), path(u"old"_s)));
        write(path(u"a.tif"_s), "new");
    }

    void movesNoOther()
    {
        QCOMPARE(moveFile(path(u"a.tif"_s), path(u"b.tif"_s), m_state), MoveEnd::OtherFile);
        QCOMPARE(read(path(u"a.tif"_s)), "new");
        QVERIFY(!QFile::exists(path(u"b.tif"_s)));
    }

    void removesNoOther()
    {
        removeMoved(path(u"a.tif"_s), m_state);
        QCOMPARE(read(path(u"a.tif"_s)), "new");
        removeMoved(path(u"old"_s), m_state);
        QVERIFY(!QFile::exists(path(u"old"_s)));
        QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden), { u"a.tif"_s });
    }

private:
    QString path(const QString& name) const { return m_folder->filePath(name); }

    static void write(const QString& path, const QByteArray& bytes)
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    }

    static QByteArray read(const QString& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    FileState m_state;
};

} // namespace pagestack

QTEST_GUILESS_MAIN(pagestack::MoverTest)
#include "MoverTest.moc"
