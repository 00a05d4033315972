#include "engine/files/StagedFile.h"

#include "tests/support/FileSizeLimit.h"
#include "tests/support/Testing.h"
#include "tests/support/TiffBuilder.h"

#include <sys/stat.h>
#ifdef __linux__
#include <sys/syscall.h>
#include <sys/xattr.h>
#endif
#include <unistd.h>

namespace {

mode_t permissions(const QString& path)
{
    struct stat status = {};
    return ::stat(QFile::encodeName(path).constData(), &status) == 0 ? status.st_mode & 0777U : 0;
}

void setPermissions(const QString& path, mode_t mode)
{
    if (::chmod(QFile::encodeName(path).constData(), mode) != 0)
        qFatal("chmod failed");
}

bool replaces(const QString& path, const QByteArray& bytes)
{
    const auto replace = [&] {
        StagedFile file(path);
        file.write(span(bytes));
        file.commit();
    };
    return reasonOf(replace).isNull();
}

} // namespace

#ifdef __linux__
namespace {

/// What another program does in the moment before a call of that name.
std::function<void()> beforeSync;
std::function<void()> beforeRename;

void run(std::function<void()>& hook)
{
    if (const auto once = std::exchange(hook, {}))
        once();
}

} // namespace

// In place of those of the system's library.
extern "C" {
int watchedSync(int file) __asm__("fsync");
int watchedRename(int fromFolder, const char* from, int toFolder, const char* to,
                  unsigned flags) __asm__("renameat2");

int watchedSync(int file)
{
    run(beforeSync);
    return static_cast<int>(::syscall(SYS_fsync, file));
}

int watchedRename(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags)
{
    run(beforeRename);
    return static_cast<int>(::syscall(SYS_renameat2, fromFolder, from, toFolder, to, flags));
}
}
#endif

class StagedFileTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        setPermissions(m_folder->path(), 0755);
    }

    void keepsPermissionsOfTheFileItReplaces()
    {
        putBytes(path(u"a"_s), "old");
        for (const mode_t mode : { 0640U, 0604U }) {
            setPermissions(path(u"a"_s), mode);
            QVERIFY(replaces(path(u"a"_s), "new"));
            QCOMPARE(permissions(path(u"a"_s)), mode);
        }
        const QByteArray name = QFile::encodeName(path(u"a"_s));
        if (::chown(name.constData(), 65534, 65533) == 0) { // root alone may
            struct stat status = {};
            QVERIFY(replaces(path(u"a"_s), "new"));
            QCOMPARE(::stat(name.constData(), &status), 0);
            QVERIFY(status.st_uid == 65534 && status.st_gid == 65533);
        }
        const mode_t mask = ::umask(027);
        const bool isMade = replaces(path(u"b"_s), "new");
        ::umask(mask);
        QVERIFY(isMade);
        QCOMPARE(permissions(path(u"b"_s)), mode_t { 0640 });
    }

    void keepsAccessListsOfTheFileItReplaces()
    {
#ifdef __linux__
        // Version 2; tag, rights and number, little-endian: owner, user 1, group, mask, all.
        const QByteArray list
            = QByteArray::fromHex("02000000 01000600ffffffff 0200040001000000 04000000ffffffff "
                                  "10000400ffffffff 20000000ffffffff");
        const auto listOf = [this](const QString& name) {
            QByteArray found(100, '\0');
            const ssize_t size = ::getxattr(QFile::encodeName(path(name)).constData(),
                                            "system.posix_acl_access", found.data(), 100);
            return found.first(std::max<qsizetype>(0, size));
        };
        const auto set = [&](const QString& name, const char* attribute) {
            return ::setxattr(QFile::encodeName(path(name)).constData(), attribute,
                              list.constData(), static_cast<std::size_t>(list.size()), 0)
                == 0;
        };
        putBytes(path(u"plain"_s), "old");
        setPermissions(path(u"plain"_s), 0640);
        putBytes(path(u"listed"_s), "old");
        if (!set(u"listed"_s, "system.posix_acl_access"))
            QSKIP("the file system knows no access lists");
        QVERIFY(set({}, "system.posix_acl_default")); // which a new file of the folder inherits
        for (const QString& name : { u"plain"_s, u"listed"_s }) {
            QVERIFY(replaces(path(name), "new"));
            QCOMPARE(permissions(path(name)), mode_t { 0640 });
            QCOMPARE(listOf(name), name == u"plain" ? QByteArray() : list);
        }
#else
        QSKIP("the lists of this system are not kept");
#endif
    }

    void keepsWhatHasComeToTheTarget()
    {
        {
            StagedFile first(path(u"a"_s));
            StagedFile second(path(u"a"_s));
            StagedFile atALink(path(u"b"_s));
            first.write(span("first"));
            first.commit(StagedFile::Existing::Kept);
            QVERIFY(QFile::link(u"nowhere"_s, path(u"b"_s)));
            StagedFile last(path(u"a"_s));
            StagedFile behindALink(path(u"b"_s));
            for (StagedFile* file : { &second, &atALink, &last, &behindALink })
                QVERIFY_THROWS_EXCEPTION(std::runtime_error,
                                         file->commit(StagedFile::Existing::Kept));
        }
        QCOMPARE(bytesOf(path(u"a"_s)), QByteArray("first"));
        QCOMPARE(QFile::symLinkTarget(path(u"b"_s)), path(u"nowhere"_s));
        QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden),
                 QStringList { u"a"_s });
    }

    /// A cancelled run would leave pages that nobody was told of, or remove another program's file.
    void takesBackWhatWasPutAhead()
    {
        const QString target = path(u"a"_s);
        const auto put = [&](auto&& meanwhile) {
            StagedFile file(target);
            file.write(span("new"));
            file.putAhead();
            meanwhile(file);
        };
        const QByteArray name = QFile::encodeName(target);
        const QByteArray other = QFile::encodeName(path(u"b"_s));

        put([&](const StagedFile& file) {
            QVERIFY(!file.isGone());
            QCOMPARE(bytesOf(target), QByteArray("new"));
        });
        QVERIFY(
            QDir(m_folder->path()).isEmpty(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot));
        put([&](const StagedFile& file) {
            QVERIFY(replaces(path(u"b"_s), "other"));
            QCOMPARE(::rename(other.constData(), name.constData()), 0);
            QVERIFY(file.isGone());
        });
        QCOMPARE(bytesOf(target), QByteArray("other"));
        put([&](StagedFile& file) {
            QVERIFY_THROWS_EXCEPTION(StagedFile::NameTaken,
                                     file.commit(StagedFile::Existing::Kept));
        });
        QVERIFY(QFile::remove(target));
        put([&](const StagedFile&) { QCOMPARE(::rename(name.constData(), other.constData()), 0); });
        QCOMPARE(bytesOf(path(u"b"_s)), QByteArray("new"));
        put([&](StagedFile& file) { file.commit(StagedFile::Existing::Kept); });
        QCOMPARE(bytesOf(target), QByteArray("new"));
        QVERIFY(QFile::link(u"nowhere"_s, path(u"c"_s)));
        StagedFile behindALink(path(u"c"_s));
        behindALink.putAhead();
        QVERIFY(!QFile::exists(path(u"nowhere"_s)));
    }

    void keepsWhatAnotherProgramPutsThere()
    {
#ifdef __linux__
        const QByteArray target = QFile::encodeName(path(u"a"_s));
        const auto remove = [&] { ::unlink(target.constData()); };
        const auto rename
            = [&] { ::rename(QFile::encodeName(path(u"b"_s)).constData(), target.constData()); };
        const auto alter = [&] { QFile::resize(path(u"a"_s), 2); };
        for (std::function<void()>* moment : { &beforeSync, &beforeRename })
            for (const auto& [change, left] :
                 { std::pair<std::function<void()>, QByteArray>(remove, "new"),
                   { rename, "other" },
                   { alter,
                     "ol" } }) {
                QVERIFY(replaces(path(u"a"_s), "old") && replaces(path(u"b"_s), "other"));
                const std::optional<FileState> expected = fileState(target);
                *moment = change;
                StagedFile file(path(u"a"_s));
                file.write(span("new"));
                const QString reason
                    = reasonOf([&] { file.commit(StagedFile::Existing::Replaced, expected); });
                QCOMPARE(reason.isEmpty(), left == "new");
                QCOMPARE(bytesOf(path(u"a"_s)), left);
            }
#else
        QSKIP("the calls of this system are not replaced");
#endif
    }

    void replacesTheTargetOfALink()
    {
        QVERIFY(QDir(m_folder->path()).mkpath(u"folder/away"_s));
        // A link and where it leads; the file that is replaced through it, and where that lies.
        for (const auto& [link, destination, name, place] :
             { std::tuple(u"folder/one"_s, u"../dangling"_s, u"folder/one"_s, u"dangling"_s),
               { u"folder/two"_s, u"one"_s, u"folder/two"_s, u"dangling"_s },
               { u"three"_s, path(u"dangling"_s), u"three"_s, u"dangling"_s },
               { u"four"_s, u"folder/away"_s, u"four/../a"_s, u"folder/a"_s } }) {
            QVERIFY(QFile::link(destination, path(link)));
            QVERIFY(replaces(path(name), link.toUtf8()));
            QCOMPARE(bytesOf(path(place)), link.toUtf8());
            QVERIFY(QFileInfo(path(link)).isSymLink());
        }
        QCOMPARE(namesIn(m_folder->path()),
                 (QStringList { u"dangling"_s, u"folder"_s, u"four"_s, u"three"_s }));
    }

    void followsNoLinkOfAStrangerWhereOthersMayWrite()
    {
        putBytes(path(u"mine"_s), "old");
        QVERIFY(QFile::link(u"mine"_s, path(u"link"_s)));
        const auto own = [this](const QString& name, uid_t user) {
            return ::lchown(QFile::encodeName(path(name)).constData(), user, 65534);
        };
        if (own(u"link"_s, 65534) != 0)
            QSKIP("only root can give a link away");
        QVERIFY(replaces(path(u"link"_s), "followed"));
        for (const mode_t mode : { 01777U, 0777U, 0775U }) {
            setPermissions(m_folder->path(), mode);
            QVERIFY(!replaces(path(u"link"_s), "new"));
            QCOMPARE(bytesOf(path(u"mine"_s)), QByteArray("followed"));
        }
        QCOMPARE(own({}, 65534), 0); // the link of the folder's owner
        QVERIFY(replaces(path(u"link"_s), "new"));
    }

    void refusesTargetsThatAreNoFiles()
    {
        QVERIFY(QDir(m_folder->path()).mkdir(u"folder"_s));
        putBytes(path(u"file"_s), "old");
        putBytes(path(u"protected"_s), "old");
        setPermissions(path(u"protected"_s), 0444);
        const QStringList before = namesIn(m_folder->path());
        for (const QStringList& row : textsOf(R"(
folder    | a folder of that name is in the way
protected | the file there is write-protected
missing/a | cannot create a file in the folder: No such file or directory
file/a    | cannot create a file in the folder: Not a directory
          | the output has no name
)")) {
            const QString target = row[0].isEmpty() ? row[0] : path(row[0]);
            QCOMPARE(reasonOf([&] { StagedFile file(target); }), row[1]);
            QCOMPARE(namesIn(m_folder->path()), before);
        }
    }

    // The look that a plan takes before may be long ago.
    void refusesTargetsProtectedMeanwhile()
    {
        for (const QString& name : { u"file"_s, u"link"_s }) {
            putBytes(path(u"file"_s), "old");
            QFile::link(u"file"_s, path(u"link"_s));
            StagedFile file(path(name));
            file.write(span("new"));
            setPermissions(path(u"file"_s), 0444);
            QVERIFY(StagedFile::isWriteProtected(QFile::encodeName(path(name))));
            QCOMPARE(reasonOf([&] { file.commit(); }), u"the file there is write-protected"_s);
            QCOMPARE(bytesOf(path(u"file"_s)), QByteArray("old"));
            setPermissions(path(u"file"_s), 0644);
        }
    }

    // What is written at the last moment would set it again.
    void keepsTheDateThatIsWanted()
    {
        for (const std::int64_t timeNs :
             std::initializer_list<std::int64_t> { 951'782'400'123'456'789, -1'500'000'000 })
            for (const bool isReplaced : { false, true }) {
                if (!isReplaced)
                    QFile::remove(path(u"a"_s));
                StagedFile file(path(u"a"_s));
                file.setModified(timeNs);
                file.write(span("new"));
                file.settle();
                file.writeAt(1, span("ot"));
                file.commit();
                QCOMPARE(fileState(QFile::encodeName(path(u"a"_s)))->modifiedNs, timeNs);
            }
    }

    // Large ones meet it on the way, the small one at the end.
    void leavesNothingOnAFullDisk()
    {
        for (const auto& [name, side] : { std::pair(u"a.png"_s, 300),
                                          { u"a.jpg"_s, 300 },
                                          { u"a.bmp"_s, 300 },
                                          { u"a.gif"_s, 300 },
                                          { u"a.tiff"_s, 300 },
                                          { u"a.jpg"_s, 100 } }) {
            TestPage page("rgb");
            page.width = page.height = side;
            page.sample = [](int x, int y, int c) { // hard to compress
                const auto seed
                    = static_cast<std::uint64_t>(x * 7919 ^ y * 104'729 ^ c * 1'299'709);
                return seed * 0x9E3779B97F4A7C15 >> 56U;
            };
            SinglePage single(page);
            putBytes(single.path(name), "old");
            {
                const FileSizeLimit disk(2000);
                QVERIFY2(!single.saves(name), qPrintable(name));
            }
            QCOMPARE(single.image().failureReason(), u"cannot write: File too large"_s);
            QCOMPARE(bytesOf(single.path(name)), QByteArray("old"));
            QCOMPARE(namesIn(single.folder()).size(), 2);
            QVERIFY(single.saves(name) && bytesOf(single.path(name)).size() > 2000);
        }
    }

private:
    QString path(const QString& name) const { return m_folder->filePath(name); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

QTEST_GUILESS_MAIN(StagedFileTest)
#include "StagedFileTest.moc"
