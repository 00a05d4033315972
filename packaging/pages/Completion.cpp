#include "packaging/pages/Completion.h"

#include "cli/OptionTable.h"
#include "engine/options/Presets.h"

#include <QRegularExpression>
#include <QStringList>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    enum class Kind {
        Flag,
        Words,
        Folder,
        File,
        Text,
    };

    QStringList words(const OptionRow& row)
    {
        if (row.longName == u"preset") {
            QStringList names;
            for (const Preset& preset : shippedPresets())
                names.append(shortName(preset));
            return names;
        }
        return row.value.contains(u'|')
            ? row.value.split(u'|').filter(QRegularExpression(u"^[a-z]"_s))
            : QStringList();
    }

    Kind kindOf(const OptionRow& row)
    {
        if (!row.takesValue())
            return Kind::Flag;
        if (row.value == u"DIR")
            return Kind::Folder;
        if (row.value.endsWith(u"FILE"))
            return Kind::File;
        return words(row).isEmpty() ? Kind::Text : Kind::Words;
    }

    /// Short enough for a line beside the option.
    QString summary(const OptionRow& row)
    {
        const QString& text = row.meaning;
        return text.left(text.indexOf(QRegularExpression(u"[;(]|, "_s))).trimmed();
    }

    /// A word as all three shells take it.
    QString quoted(QString text) { return u'\'' + text.replace(u'\'', u"'\\''"_s) + u'\''; }

    QString names(const OptionRow& row, const QString& between)
    {
        const QString longForm = u"--"_s + row.longName;
        return row.shortName == 0 ? longForm
                                  : u'-' + QString(QChar(row.shortName)) + between + longForm;
    }

    QStringList commandWords()
    {
        QStringList all;
        for (const CommandName& name : commandNames())
            all.append(name.word);
        return all;
    }

    QString bashScript()
    {
        QString cases;
        QStringList all;
        for (const OptionRow& row : optionTable()) {
            all += names(row, u" "_s).split(u' ');
            const Kind kind = kindOf(row);
            if (kind == Kind::Flag)
                continue;
            QString reply;
            if (!words(row).isEmpty())
                reply = u"compgen -W "_s + quoted(words(row).join(u'\n')) + u" -- \"$word\""_s;
            if (kind == Kind::Folder)
                reply += u"compgen -d -- \"$word\""_s;
            if (kind == Kind::File)
                reply += (reply.isEmpty() ? u""_s : u"; "_s) + u"compgen -f -- \"$word\""_s;
            cases += u"    %1) mapfile -t COMPREPLY < <(%2) ; return ;;\n"_s.arg(
                names(row, u"|"_s), reply.isEmpty() ? u":"_s : reply);
        }
        return uR"(# Completion of pagestack-convert for bash.
_pagestack_convert() {
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} IFS=$'\n'
    COMPREPLY=()
    # "--format=png" comes as three words.
    if [ "$word" = = ]; then
        word=''
    elif [ "$before" = = ]; then
        before=${COMP_WORDS[COMP_CWORD - 2]}
    fi
    case $before in
%1    esac
    if [[ $word == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W %2 -- "$word")
    else
        mapfile -t COMPREPLY < <(compgen -d -- "$word"; compgen -f -X '!*.@(tif|TIF|tiff|TIFF)' -- "$word"
            [ "$COMP_CWORD" != 1 ] || compgen -W %3 -- "$word")
    fi
}
shopt -s extglob
complete -o filenames -F _pagestack_convert pagestack-convert
)"_s.arg(cases, quoted(all.join(u'\n')), quoted(commandWords().join(u'\n')));
    }

    QString zshScript()
    {
        QString script
            = u"#compdef pagestack-convert\n# Completion of pagestack-convert for zsh.\n_arguments -s -S"_s;
        const auto escaped = [](QString text) {
            return text.replace(u'[', u"\\["_s).replace(u']', u"\\]"_s).replace(u':', u"\\:"_s);
        };
        for (const OptionRow& row : optionTable()) {
            const Kind kind = kindOf(row);
            QString action;
            if (kind != Kind::Flag) {
                QStringList choices;
                for (const QString& word : words(row))
                    choices.append(QString(word).replace(u' ', u"\\ "_s));
                action = u':' + escaped(row.longName) + u':';
                if (kind == Kind::Folder)
                    action += u"_files -/"_s;
                else if (kind == Kind::File)
                    action += u"_files"_s;
                else if (kind == Kind::Words)
                    action += u'(' + choices.join(u' ') + u')';
            }
            const QString rest = quoted(u'[' + escaped(summary(row)) + u']' + action);
            const QString takes = kind == Kind::Flag ? u""_s : u"="_s;
            script += u" \\\n  "_s;
            if (row.shortName == 0)
                script += quoted(u"--"_s + row.longName + takes) + rest;
            else
                script += quoted(u'(' + names(row, u" "_s) + u')')
                    + u"{-%1%2,--%3%4}"_s.arg(QChar(row.shortName))
                          .arg(kind == Kind::Flag ? u""_s : u"+"_s, row.longName, takes)
                    + rest;
        }
        script += u" \\\n  '1: :{_alternative \"commands:command:(%1)\" \"files:source:_files\"}'"_s
                      .arg(commandWords().join(u' '));
        return script + u" \\\n  '*:source:_files -g \"*.(tif|TIF|tiff|TIFF)(-.)\"'\n"_s;
    }

    QString fishScript()
    {
        QString script = u"# Completion of pagestack-convert for fish.\n"_s;
        for (const OptionRow& row : optionTable()) {
            script += u"complete -c pagestack-convert"_s;
            if (row.shortName != 0)
                script += u" -s "_s + QChar(row.shortName);
            script += u" -l "_s + row.longName;
            switch (kindOf(row)) {
            case Kind::Flag:
                break;
            case Kind::File:
                script += u" -r"_s;
                break;
            case Kind::Folder:
                script += u" -x -a '(__fish_complete_directories)'"_s;
                break;
            case Kind::Words:
                script += u" -x -a "_s + quoted(words(row).join(u' '));
                break;
            case Kind::Text:
                script += u" -x"_s;
                break;
            }
            script += u" -d "_s + quoted(summary(row)) + u'\n';
        }
        for (const CommandName& name : commandNames())
            script += u"complete -c pagestack-convert -n __fish_use_subcommand -a %1 -d %2\n"_s.arg(
                name.word, quoted(name.meaning));
        return script;
    }

} // namespace

QString completionScript(const QString& shell)
{
    if (shell == u"bash")
        return bashScript();
    if (shell == u"zsh")
        return zshScript();
    return shell == u"fish" ? fishScript() : QString();
}

} // namespace pagestack
