// Makes the pages that are installed beside the command line from the options that it parses:
// pagestack_pages man|bash|zsh|fish FILE

#include "packaging/pages/Completion.h"
#include "packaging/pages/ManualPage.h"

#include <QFile>

#include <cstdio>

int main(int argc, char* argv[])
{
    using namespace Qt::StringLiterals;
    if (argc != 3)
        return 2;
    const QString what = QString::fromLocal8Bit(argv[1]);
    const QString text
        = what == u"man" ? pagestack::manualPage() : pagestack::completionScript(what);
    QFile file(QString::fromLocal8Bit(argv[2]));
    const QByteArray bytes = text.toUtf8();
    if (bytes.isEmpty() || !file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()
        || !file.flush()) {
        std::fprintf(stderr, "%s cannot be written\n", argv[2]);
        return 1;
    }
    return 0;
}
