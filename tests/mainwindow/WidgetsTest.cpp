#include "mainwindow/desktop/InformationScript.h"
#include "tests/mainwindow/Session.h"

#include <QMenuBar>

namespace {

/// The key of the letter after the first single '&' of `text`; empty without one.
QString mnemonicOf(const QString& text) { return QKeySequence::mnemonic(text).toString(); }

} // namespace

class WidgetsTest : public WindowFixture
{
    Q_OBJECT

private slots:
    void init()
    {
        takeNewFolder();
        start();
        QVERIFY(QTest::qWaitForWindowActive(&window()));
    }

    // Two owners of one key cancel each other out: neither answers.
    void givesEachAltKeyToOneControl()
    {
#ifdef Q_OS_MACOS
        QSKIP("Alt types characters here");
#endif
        auto& tabs = find<QTabWidget>("settingTabView");
        for (int tab = 0; tab < tabs.count(); ++tab) {
            tabs.setCurrentIndex(tab);
            QSet<QString> keys;
            const auto take = [&](const QString& key, const QObject& owner) {
                QVERIFY2(key.isEmpty() || !keys.contains(key), qPrintable(owner.objectName()));
                keys.insert(key);
            };
            for (const QMenu* menu : window().menuBar()->findChildren<QMenu*>())
                take(mnemonicOf(menu->title()), *menu);
            for (const auto* label : window().findChildren<QLabel*>())
                if (label->buddy() != nullptr && label->buddy()->isVisible())
                    take(mnemonicOf(label->text()), *label);
            for (const auto* button : window().findChildren<QAbstractButton*>())
                if (button->isVisible())
                    take(button->shortcut().toString(), *button);
            QVERIFY(keys.size() > 10);
        }
        QTest::keyClick(&window(), Qt::Key_U, Qt::AltModifier);
        QTRY_VERIFY(find<QAbstractButton>("inculdeSubfoldersBtn").isChecked());
    }

    void answersWithTheButtonPressed()
    {
        for (const auto& [key, count, answer] :
             { std::tuple(Qt::Key_Return, 2, 0), std::tuple(Qt::Key_Escape, 2, 1),
               std::tuple(Qt::Key_Escape, 1, 0), std::tuple(Qt::Key_Escape, 3, 2) }) {
            int pressed = -1;
            alerts().ask(&window(), AlertPanel::Style::Critical, u"Title"_s, u"<b>Text</b>?"_s,
                         QStringList { u"Yes"_s, u"No"_s, u"Maybe"_s }.first(count),
                         [&](int button) { pressed = button; });
            auto& box = *window().findChildren<QMessageBox*>().constLast();
            QVERIFY(box.isModal() && pressed == -1); // asking does not wait
            QCOMPARE(box.textFormat(), Qt::PlainText);
            QTest::keyClick(&box, key);
            QCOMPARE(pressed, answer);
        }
    }

    void opensTheFileDialogs()
    {
        QDir(path(u""_s)).mkpath(u"one"_s);
        QDir(path(u""_s)).mkpath(u"two"_s);
        makeFile(path(u"list.txt"_s));
        const QString title = u"Title"_s;
        const QStringList types { u"txt"_s };
        QStringList names;
        const auto done = [&](const QList<QUrl>& urls) {
            names.clear();
            for (const QUrl& url : urls)
                names.append(url.fileName());
            names.sort();
        };
        const QStringList chosen { u"list.txt"_s, u"one two"_s, u"one"_s, u"list.txt"_s,
                                   u"new name.txt"_s };
        for (int kind = 0; kind < 5; ++kind) {
            if (kind == 0)
                chooser().chooseFiles(&window(), title, types, done);
            else if (kind == 1)
                chooser().chooseFolders(&window(), title, done);
            else if (kind == 2)
                chooser().chooseFolder(&window(), title, done);
            else if (kind == 3)
                chooser().chooseTextFile(&window(), title, types, done);
            else
                chooser().chooseSaveFile(&window(), title, types.first(), u"new name"_s, done);
            QFileDialog& dialog = *window().findChildren<QFileDialog*>().constLast();
            QCOMPARE(dialog.acceptMode() == QFileDialog::AcceptSave, kind == 4);
            QVERIFY(!dialog.testOption(QFileDialog::DontConfirmOverwrite));
            dialog.setDirectory(path(u""_s));
            if (kind == 1) {
                QVERIFY(dialog.testOption(QFileDialog::DontUseNativeDialog)); // they return one
                auto& list = childOf<QAbstractItemView>(dialog, "listView");
                QTRY_COMPARE(list.model()->rowCount(list.rootIndex()), 3); // and that of the logs
                list.selectAll();
            } else if (kind != 4) {
                dialog.selectFile(path(chosen.at(kind)));
            }
            static_cast<QDialog&>(dialog).accept(); // as the button; protected in the class itself
            names.removeOne(u"data"_s);
            QCOMPARE(names.join(u' '), chosen.at(kind));
        }
        chooser().chooseFolder(&window(), title, done);
        window().findChildren<QFileDialog*>().constLast()->reject();
        QCOMPARE(names, QStringList());
    }

    void namesAFileByItsFolders()
    {
        QCOMPARE(
            informationScript(u"/a.tif"_s),
            u"tell application \"Finder\"\nactivate \nopen information window of document file "
            "\"a.tif\" of startup disk\nend tell"_s);
        QVERIFY(
            informationScript(u"/%@/%2 ä/%1.tif"_s)
                .contains(u" file \"%1.tif\" of folder \"%2 ä\" of folder \"%@\" of startup "_s));
        // A name that could become a command is not put into the script.
        QVERIFY(isSafeInScript(u"/Büro 1/it's $(a) `b` %1\n.tif"_s));
        QVERIFY(!isSafeInScript(u"/a\" & (do shell script \"id\") & \".tif"_s));
        QVERIFY(!isSafeInScript(u"/folder\\/a.tif"_s)); // would take the closing quote along
    }
};

QTEST_MAIN(WidgetsTest)
#include "WidgetsTest.moc"
