#include "dictionary/TmxFile.h"

#include "BuildInfo.h"
#include "dictionary/ConflictList.h"
#include "dictionary/Dictionary.h"
#include "dictionary/Strings.h"
#include "questionnaire/CaptionEscaping.h"
#include "util/FileSystem.h"
#include "util/LocaleTable.h"
#include "util/Messages.h"
#include "util/XmlExchange.h"

#include <vector>

namespace dictionary {

namespace {

// Larger files are refused unread: a memory of a million entries in a few languages is a few
// hundred megabytes of TMX.
constexpr qint64 kMaxTmxBytes = qint64(1) << 30;

// TMX has no element for a character XML cannot carry: a placeholder whose type names it.
void UnsafeAsPlaceholder(QString& out, char16_t c) {
    out.append(QStringLiteral("<ph type=\"x-cp-%1\"/>")
                   .arg(QStringLiteral("%1").arg(uint(c), 4, 16, QLatin1Char('0')).toUpper()));
}

// The dictionary keeps texts as grid cells show them, line breaks and tabs written "\n", "\t";
// a TMX variant carries the characters. A text that is not in that form goes out as it is.
QString ToVariant(const QString& stored) {
    const QString text = questionnaire::UnescapeCaption(stored);
    return questionnaire::EscapeCaption(text) == stored ? text : stored;
}

// A variant's <seg>, with the characters the writer put in placeholders.
bool ReadSegment(QXmlStreamReader& reader, QString& text) {
    return util::xml::ReadElementText(reader, text, [](QXmlStreamReader& r, QString& into) {
        const QStringView type = r.attributes().value(QLatin1String("type"));
        if (r.name() != QLatin1String("ph") || !type.startsWith(QLatin1String("x-cp-")))
            return false; // other inline markup: its text counts
        util::xml::AppendHexCharacter(type.mid(5), into);
        r.skipCurrentElement();
        return true;
    });
}

} // namespace

bool IsTmxPath(const QString& path) {
    return path.endsWith(QLatin1String(".tmx"), Qt::CaseInsensitive);
}

bool ExportTmx(const QString& path, const CDictionary& dictionary, util::Messages& messages,
               qint64* units) {
    QString out =
        QStringLiteral("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<tmx version=\"1.4\">\n"
                       " <header creationtool=\"%1\" creationtoolversion=\"%2.%3\" "
                       "segtype=\"sentence\" o-tmf=\"%1\" adminlang=\"en-US\" srclang=\"*all*\" "
                       "datatype=\"plaintext\"/>\n <body>\n")
            .arg(QLatin1String(buildinfo::kProduct))
            .arg(buildinfo::kVersionMajor)
            .arg(buildinfo::kVersionMinor);
    qint64 written = 0;
    for (int n = 0; n < dictionary.GetEntryCount(); ++n) {
        const CDicEntry& entry = dictionary.GetEntry(n);
        if (entry.m_deleted || entry.m_texts.empty())
            continue;
        out += QLatin1String("  <tu>");
        for (const auto& [language, text] : entry.m_texts) {
            out += QStringLiteral("<tuv xml:lang=\"%1\"><seg>").arg(util::LanguageTag(language));
            util::xml::AppendContent(out, ToVariant(text), UnsafeAsPlaceholder);
            out += QLatin1String("</seg></tuv>");
        }
        out += QLatin1String("</tu>\n");
        ++written;
    }
    out += QLatin1String(" </body>\n</tmx>\n");
    const QByteArray bytes = out.toUtf8();
    util::ReplacingFile file(path);
    if (!(file.Open() && file.Write(bytes.constData(), bytes.size()) && file.Commit())) {
        messages.Error(Tr(strings::kCannotWriteTmx).arg(path, file.ErrorString()));
        return false;
    }
    if (units)
        *units = written;
    return true;
}

TmxImport ImportTmx(const QString& path, CDictionary& dictionary, ConflictChooser& chooser,
                    util::Messages& messages) {
    TmxImport result;
    QByteArray bytes;
    QString error;
    if (!util::xml::ReadSmallFile(path, kMaxTmxBytes, bytes, error)) {
        messages.Error(Tr(strings::kCannotReadTmx).arg(path, error));
        result.status = TmxImport::Status::CannotRead;
        return result;
    }
    QXmlStreamReader reader(bytes);
    std::vector<CDicEntry::Texts> rows;
    bool tmx = util::xml::ReadToRootElement(reader, error) && reader.name() == QLatin1String("tmx");
    while (tmx && reader.readNextStartElement()) {
        if (reader.name() != QLatin1String("body")) {
            reader.skipCurrentElement();
            continue;
        }
        while (reader.readNextStartElement()) {
            if (reader.name() != QLatin1String("tu")) {
                reader.skipCurrentElement();
                continue;
            }
            CDicEntry::Texts texts;
            while (reader.readNextStartElement()) {
                if (reader.name() != QLatin1String("tuv")) {
                    reader.skipCurrentElement();
                    continue;
                }
                // TMX 1.1 named the language "lang"; 1.4 uses xml:lang.
                QString tag = reader.attributes()
                                  .value(QLatin1String("http://www.w3.org/XML/1998/namespace"),
                                         QLatin1String("lang"))
                                  .toString();
                if (tag.isEmpty())
                    tag = reader.attributes().value(QLatin1String("lang")).toString();
                const qint32 language = util::LanguageFromTag(tag);
                QString text;
                while (reader.readNextStartElement()) {
                    if (reader.name() == QLatin1String("seg"))
                        ReadSegment(reader, text);
                    else
                        reader.skipCurrentElement();
                }
                // A variant in a language the program does not know has nowhere to go.
                if (language != 0 && !text.isEmpty())
                    texts[language] = questionnaire::EscapeCaption(text);
            }
            if (texts.size() > 1)
                rows.push_back(std::move(texts));
            else
                ++result.skipped;
        }
    }
    // A file cut short or damaged is refused whole: nothing of it is sent.
    if (!tmx || reader.hasError()) {
        messages.Error(Tr(strings::kNotTmx).arg(path));
        result.status = TmxImport::Status::NotTmx;
        return result;
    }
    for (const CDicEntry::Texts& row : rows) {
        ++result.units;
        if (!dictionary.AddWithConflicts(row, result.added, chooser)) {
            result.status = TmxImport::Status::Cancelled;
            break;
        }
    }
    return result;
}

} // namespace dictionary
