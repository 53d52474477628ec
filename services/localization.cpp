#include "localization.h"

#include "PromptSeam.h"
#include "ShippedData.h"

#include <QFile>
#include <QHash>
#include <QLoggingCategory>
#include <QTextStream>

#include <optional>

Q_LOGGING_CATEGORY(lcLocalization, "corvell.services.localization")

namespace {
struct StringTable
{
    std::optional<QHash<QString, QString>> texts;
    bool warned = false;
};

StringTable &table()
{
    static StringTable instance;
    return instance;
}

struct Entry
{
    QString id;
    QString localized;
};

QString readLine(QTextStream &stream)
{
    QString line = stream.readLine();
    while (line.endsWith(QLatin1Char('\r')))
        line.chop(1);
    return line;
}

// The text after <tag> up to </tag>, or to the end of the line when the closing tag is missing.
std::optional<QString> tagValue(const QString &line, const QString &tag)
{
    const QString open = QLatin1Char('<') + tag + QLatin1Char('>');
    const qsizetype start = line.indexOf(open);
    if (start < 0)
        return std::nullopt;
    const qsizetype valueStart = start + open.size();
    const qsizetype end = line.indexOf(QStringLiteral("</") + tag + QLatin1Char('>'), valueStart);
    return end < 0 ? line.mid(valueStart) : line.mid(valueStart, end - valueStart);
}

// Reads one entry after its "<s>" line; nullopt when the file ends before "</s>".
std::optional<Entry> readEntry(QTextStream &stream)
{
    Entry entry;
    while (!stream.atEnd()) {
        const QString line = readLine(stream);
        if (line == QLatin1String("</s>"))
            return entry;
        if (const auto id = tagValue(line, QStringLiteral("id")))
            entry.id = id->trimmed();
        else if (tagValue(line, QStringLiteral("d")) || tagValue(line, QStringLiteral("eng")))
            continue; // for translators only
        else if (const auto localized = tagValue(line, QStringLiteral("loc")))
            entry.localized = *localized;
    }
    return std::nullopt;
}
} // namespace

void LoadStrings(const QString &folder)
{
    auto &texts = table().texts;
    texts.emplace();
    QFile file(folder + QStringLiteral("/configstrings.xml"));
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        qCWarning(lcLocalization) << "cannot read" << file.fileName();
        return;
    }
    QTextStream stream(&file);
    while (!stream.atEnd()) {
        if (readLine(stream) != QLatin1String("<s>"))
            continue;
        const auto entry = readEntry(stream);
        if (entry && !texts->contains(entry->id))
            texts->insert(entry->id, entry->localized);
    }
}

QString GetLocalizedString(qint32 id)
{
    StringTable &state = table();
    if (!state.texts) {
        if (!state.warned) {
            state.warned = true;
            Prompt prompt;
            prompt.kind = PromptKind::MessageBox;
            prompt.mainText = QStringLiteral("strings file not loaded yet");
            PromptSeam::Ask(prompt);
        }
        return QStringLiteral(".LOCERR");
    }
    return state.texts->value(QString::number(id));
}

void ClearStrings()
{
    table().texts.reset();
}

QString QuillonDataFolder()
{
    return quillon::ShippedDataFolder();
}
