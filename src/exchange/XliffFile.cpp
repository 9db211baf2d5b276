#include "exchange/XliffFile.h"

#include "exchange/CaptionGroups.h"
#include "exchange/ExportRows.h"
#include "exchange/Strings.h"
#include "questionnaire/CaptionAccess.h"
#include "questionnaire/LanguageList.h"
#include "questionnaire/Question.h"
#include "questionnaire/Questionnaire.h"
#include "util/FileSystem.h"
#include "util/LocaleTable.h"
#include "util/Messages.h"
#include "util/Progress.h"
#include "util/XmlExchange.h"

#include <QFile>
#include <QFileInfo>
#include <QStringDecoder>

#include <algorithm>
#include <functional>
#include <memory>
#include <vector>

namespace exchange {

using namespace questionnaire;

namespace {

constexpr char kNamespace12[] = "urn:oasis:names:tc:xliff:document:1.2";
constexpr char kNamespace20[] = "urn:oasis:names:tc:xliff:document:2.0";
// The prefix of this program's unit types in XLIFF 2.0, where a type names its owner.
constexpr char kTypePrefix[] = "qst";

// What kind of caption a row is, as the unit's type tells translators.
QLatin1String KindName(qint32 questionId, qint32 responseId) {
    if (questionId == kSystemMessageMarker)
        return QLatin1String("system-message");
    if (questionId == kRoutingMarker)
        return QLatin1String("routing");
    switch (responseId) {
    case kLongCaption:
        return QLatin1String("long-caption");
    case kShortCaption:
        return QLatin1String("short-caption");
    case kInstructions:
        return QLatin1String("instructions");
    case kComments:
        return QLatin1String("comments");
    default:
        return QLatin1String("response");
    }
}

// A unit's id: both keys, which an NMTOKEN can carry ("10_-1", "-1_2").
QString UnitId(qint32 questionId, qint32 responseId) {
    return QStringLiteral("%1_%2").arg(questionId).arg(responseId);
}

bool ParseUnitId(QStringView id, qint32& questionId, qint32& responseId) {
    // The question id may be negative itself: the separator is searched after its first sign.
    const qsizetype separator = id.indexOf(QLatin1Char('_'), 1);
    if (separator < 0)
        return false;
    bool ok1 = false;
    bool ok2 = false;
    questionId = id.left(separator).toInt(&ok1);
    responseId = id.mid(separator + 1).toInt(&ok2);
    return ok1 && ok2;
}

QString Hex(char16_t c) {
    return QStringLiteral("%1").arg(uint(c), 4, 16, QLatin1Char('0')).toUpper();
}

// Characters XML cannot carry, as each version's markup for them: 2.0 has an element of its
// own, 1.2 a placeholder whose type names the character.
void UnsafeAs20(QString& out, char16_t c) {
    out.append(QLatin1String("<cp hex=\"")).append(Hex(c)).append(QLatin1String("\"/>"));
}
// Placeholder ids are unique within their unit.
struct UnsafeAs12 {
    int next = 0;
    void operator()(QString& out, char16_t c) {
        out.append(QStringLiteral("<ph id=\"cp%1\" ctype=\"x-cp-%2\"/>").arg(++next).arg(Hex(c)));
    }
};

QString Attribute(QStringView text) {
    QString out;
    util::xml::AppendAttribute(out, text);
    return out;
}

// One unit of a file: the row's keys and texts.
struct Unit {
    qint32 questionId = 0;
    qint32 responseId = 0;
    QString shortcut;
    QString source;
    QString target;
    bool hasTarget = false; // the target is translated (and holds a text)
};

// A whole XLIFF document of units in one language pair.
QByteArray Document(XliffVersion version, const QString& original, qint32 sourceLanguage,
                    qint32 targetLanguage, const std::vector<Unit>& units) {
    const bool v20 = version == XliffVersion::V20;
    const QString sourceTag = util::LanguageTag(sourceLanguage);
    const QString targetTag = targetLanguage ? util::LanguageTag(targetLanguage) : QString();
    QString out = QStringLiteral("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n");
    if (v20) {
        out += QStringLiteral("<xliff xmlns=\"%1\" version=\"2.0\" srcLang=\"%2\"")
                   .arg(QLatin1String(kNamespace20), sourceTag);
        if (targetLanguage)
            out += QStringLiteral(" trgLang=\"%1\"").arg(targetTag);
        out += QStringLiteral(">\n <file id=\"f1\" original=\"%1\">\n").arg(Attribute(original));
    } else {
        out += QStringLiteral("<xliff xmlns=\"%1\" version=\"1.2\">\n <file original=\"%2\" "
                              "source-language=\"%3\"")
                   .arg(QLatin1String(kNamespace12), Attribute(original), sourceTag);
        if (targetLanguage)
            out += QStringLiteral(" target-language=\"%1\"").arg(targetTag);
        out += QStringLiteral(" datatype=\"plaintext\">\n  <body>\n");
    }
    for (const Unit& unit : units) {
        const QString id = UnitId(unit.questionId, unit.responseId);
        const QLatin1String kind = KindName(unit.questionId, unit.responseId);
        if (v20) {
            out += QStringLiteral("  <unit id=\"%1\"").arg(id);
            if (!unit.shortcut.isEmpty())
                out += QStringLiteral(" name=\"%1\"").arg(Attribute(unit.shortcut));
            out += QStringLiteral(" type=\"%1:%2\" xml:space=\"preserve\">")
                       .arg(QLatin1String(kTypePrefix), kind);
            if (!unit.shortcut.isEmpty())
                out += QStringLiteral("<notes><note category=\"shortcut\">%1</note></notes>")
                           .arg(Attribute(unit.shortcut));
            out += unit.hasTarget ? QStringLiteral("<segment state=\"translated\"><source>")
                                  : QStringLiteral("<segment><source>");
        } else {
            out += QStringLiteral("   <trans-unit id=\"%1\"").arg(id);
            if (!unit.shortcut.isEmpty())
                out += QStringLiteral(" resname=\"%1\"").arg(Attribute(unit.shortcut));
            out += QStringLiteral(" restype=\"x-%1\" xml:space=\"preserve\"><source>").arg(kind);
        }
        UnsafeAs12 placeholders;
        const util::xml::UnsafeWriter unsafe =
            v20 ? util::xml::UnsafeWriter(UnsafeAs20)
                : util::xml::UnsafeWriter(std::ref(placeholders));
        util::xml::AppendContent(out, unit.source, unsafe);
        out += QLatin1String("</source>");
        if (unit.hasTarget) {
            out +=
                v20 ? QStringLiteral("<target>") : QStringLiteral("<target state=\"translated\">");
            util::xml::AppendContent(out, unit.target, unsafe);
            out += QLatin1String("</target>");
        }
        if (v20) {
            out += QLatin1String("</segment></unit>\n");
        } else {
            if (!unit.shortcut.isEmpty())
                out += QStringLiteral("<context-group purpose=\"information\"><context "
                                      "context-type=\"x-shortcut\">%1</context></context-group>")
                           .arg(Attribute(unit.shortcut));
            out += QLatin1String("</trans-unit>\n");
        }
    }
    out += v20 ? QStringLiteral(" </file>\n</xliff>\n")
               : QStringLiteral("  </body>\n </file>\n</xliff>\n");
    return out.toUtf8();
}

bool WriteWhole(const QString& path, const QByteArray& bytes, QString& error) {
    util::ReplacingFile file(path);
    if (file.Open() && file.Write(bytes.constData(), bytes.size()) && file.Commit())
        return true;
    error = file.ErrorString();
    return false;
}

// The name each of the languages gives the file that holds it as target: its short name when a
// file name can carry it and no other of them would be named the same in any letter case, else
// its LCID, which no two of them share. `lcids` holds each language once.
QStringList FileLanguageNames(const CQuestionnaire& q, const std::vector<qint32>& lcids) {
    QStringList shortNames;
    for (qint32 lcid : lcids) {
        const QString name = LanguageShortName(q, lcid);
        const bool usable = std::all_of(name.cbegin(), name.cend(), [](QChar c) {
            return c.isLetterOrNumber() || c == QLatin1Char('-') || c == QLatin1Char('_');
        });
        shortNames.append(usable ? name : QString());
    }
    QStringList names;
    for (size_t i = 0; i < lcids.size(); ++i) {
        const QString& name = shortNames[qsizetype(i)];
        bool own = !name.isEmpty();
        for (size_t j = 0; j < lcids.size() && own; ++j)
            own = j == i || (name.compare(shortNames[qsizetype(j)], Qt::CaseInsensitive) != 0 &&
                             name != QString::number(lcids[j]));
        names.append(own ? name : QString::number(lcids[i]));
    }
    return names;
}

// A file of the export: its path and the column of its target language in the rows' texts, or
// -1 when there is no target.
struct TargetFile {
    QString path;
    qsizetype column = -1;
};

std::vector<TargetFile> TargetFiles(const QString& path, const CQuestionnaire& q,
                                    const ExportOptions& options) {
    // A language listed twice is exported once, from its first column.
    std::vector<qint32> targets;
    std::vector<qsizetype> columns;
    for (qsizetype i = 1; i < options.languages.size(); ++i)
        if (std::find(targets.begin(), targets.end(), options.languages[i]) == targets.end()) {
            targets.push_back(options.languages[i]);
            columns.push_back(i);
        }
    if (targets.size() <= 1)
        return {{path, columns.empty() ? -1 : columns.front()}};
    // The extension of the file's own name: a dot in a folder's name is not one.
    qsizetype dot = path.lastIndexOf(QLatin1Char('.'));
    if (dot <= path.lastIndexOf(QLatin1Char('/')))
        dot = path.size();
    const QStringList names = FileLanguageNames(q, targets);
    std::vector<TargetFile> files;
    for (size_t t = 0; t < targets.size(); ++t)
        files.push_back(
            {path.left(dot) + QLatin1Char('.') + names[qsizetype(t)] + path.mid(dot), columns[t]});
    return files;
}

// --- reading ---

struct ParsedFile {
    QString sourceTag;
    QString targetTag;
    std::vector<Unit> units;
};

struct ParsedDocument {
    XliffVersion version = XliffVersion::V12;
    std::vector<ParsedFile> files;
};

// States in which a target is not a translation yet.
bool Untranslated(XliffVersion version, QStringView state) {
    if (version == XliffVersion::V20)
        return state == QLatin1String("initial");
    return state == QLatin1String("new") || state == QLatin1String("needs-translation");
}

// The text of <source> or <target>, with the characters each version writes as markup.
bool ReadText(QXmlStreamReader& reader, QString& text) {
    return util::xml::ReadElementText(reader, text, [](QXmlStreamReader& r, QString& into) {
        const QStringView name = r.name();
        QStringView hex;
        if (name == QLatin1String("cp"))
            hex = r.attributes().value(QLatin1String("hex"));
        else if (name == QLatin1String("ph") &&
                 r.attributes().value(QLatin1String("ctype")).startsWith(QLatin1String("x-cp-")))
            hex = r.attributes().value(QLatin1String("ctype")).mid(5);
        if (hex.isNull())
            return false; // other inline markup: its text counts
        util::xml::AppendHexCharacter(hex, into);
        r.skipCurrentElement();
        return true;
    });
}

void ReadUnit12(QXmlStreamReader& reader, ParsedFile& file) {
    Unit unit;
    const bool keyed = ParseUnitId(reader.attributes().value(QLatin1String("id")), unit.questionId,
                                   unit.responseId);
    QString state;
    while (reader.readNextStartElement()) {
        if (reader.name() == QLatin1String("source")) {
            ReadText(reader, unit.source);
        } else if (reader.name() == QLatin1String("target")) {
            state = reader.attributes().value(QLatin1String("state")).toString();
            ReadText(reader, unit.target);
            unit.hasTarget = true;
        } else {
            reader.skipCurrentElement();
        }
    }
    if (Untranslated(XliffVersion::V12, state) || unit.target.isEmpty())
        unit.hasTarget = false;
    if (keyed)
        file.units.push_back(std::move(unit));
}

// Units may stand in groups, at any depth.
void ReadBody12(QXmlStreamReader& reader, ParsedFile& file) {
    while (reader.readNextStartElement()) {
        if (reader.name() == QLatin1String("trans-unit"))
            ReadUnit12(reader, file);
        else if (reader.name() == QLatin1String("group") || reader.name() == QLatin1String("body"))
            ReadBody12(reader, file);
        else
            reader.skipCurrentElement();
    }
}

void ReadUnit20(QXmlStreamReader& reader, ParsedFile& file) {
    Unit unit;
    const bool keyed = ParseUnitId(reader.attributes().value(QLatin1String("id")), unit.questionId,
                                   unit.responseId);
    bool translated = true;
    bool anyTarget = false;
    while (reader.readNextStartElement()) {
        const bool segment = reader.name() == QLatin1String("segment");
        if (!segment && reader.name() != QLatin1String("ignorable")) {
            reader.skipCurrentElement();
            continue;
        }
        // A unit cut into segments is one caption: their texts in order.
        const QString state = reader.attributes().value(QLatin1String("state")).toString();
        bool hasTarget = false;
        while (reader.readNextStartElement()) {
            if (reader.name() == QLatin1String("source")) {
                ReadText(reader, unit.source);
            } else if (reader.name() == QLatin1String("target")) {
                ReadText(reader, unit.target);
                hasTarget = true;
            } else {
                reader.skipCurrentElement();
            }
        }
        if (segment) {
            anyTarget = anyTarget || hasTarget;
            // A target written without a state is taken as a translation: only a state that says
            // otherwise keeps it out.
            translated = translated && hasTarget && !Untranslated(XliffVersion::V20, state);
        }
    }
    unit.hasTarget = anyTarget && translated && !unit.target.isEmpty();
    if (keyed)
        file.units.push_back(std::move(unit));
}

void ReadFile20(QXmlStreamReader& reader, ParsedFile& file) {
    while (reader.readNextStartElement()) {
        if (reader.name() == QLatin1String("unit"))
            ReadUnit20(reader, file);
        else if (reader.name() == QLatin1String("group"))
            ReadFile20(reader, file);
        else
            reader.skipCurrentElement();
    }
}

// False when the bytes are not an XLIFF document of a version this program reads.
bool Parse(const QByteArray& bytes, ParsedDocument& document) {
    QXmlStreamReader reader(bytes);
    QString error;
    if (!util::xml::ReadToRootElement(reader, error) || reader.name() != QLatin1String("xliff"))
        return false;
    const QStringView ns = reader.namespaceUri();
    QString sourceTag;
    QString targetTag;
    if (ns == QLatin1String(kNamespace20)) {
        document.version = XliffVersion::V20;
        sourceTag = reader.attributes().value(QLatin1String("srcLang")).toString();
        targetTag = reader.attributes().value(QLatin1String("trgLang")).toString();
    } else if (ns == QLatin1String(kNamespace12) ||
               (ns.isEmpty() &&
                reader.attributes().value(QLatin1String("version")) == QLatin1String("1.2"))) {
        document.version = XliffVersion::V12;
    } else {
        return false;
    }
    while (reader.readNextStartElement()) {
        if (reader.name() != QLatin1String("file")) {
            reader.skipCurrentElement();
            continue;
        }
        ParsedFile file;
        if (document.version == XliffVersion::V20) {
            file.sourceTag = sourceTag;
            file.targetTag = targetTag;
            ReadFile20(reader, file);
        } else {
            file.sourceTag = reader.attributes().value(QLatin1String("source-language")).toString();
            file.targetTag = reader.attributes().value(QLatin1String("target-language")).toString();
            ReadBody12(reader, file);
        }
        document.files.push_back(std::move(file));
    }
    // A document cut short is refused whole: nothing of it is imported.
    return !reader.hasError();
}

class XliffImporter {
public:
    XliffImporter(CQuestionnaire& q, const QString& path, const ImportOptions& options,
                  const CaptionList& captions, util::Messages& messages)
        : m_q(q), m_path(path), m_options(options), m_captions(captions), m_messages(messages) {}

    qint32 Run(ImportReport* report);

private:
    qint32 Fail(qint32 code, const QString& message) {
        m_messages.Error(message);
        return code;
    }
    // The language of a tag, checked as a header's language is: known, and the questionnaire's.
    qint32 CheckLanguage(const QString& tag, qint32& lcid);
    void ImportUnit(const Unit& unit, qint32 target);
    void WriteIfDifferent(qint32 questionId, qint32 responseId, qint32 language,
                          const QString& text, qsizetype captionIndex = -1);
    void Finish(XliffVersion version, ImportReport* report);

    CQuestionnaire& m_q;
    const QString& m_path;
    const ImportOptions& m_options;
    const CaptionList& m_captions;
    util::Messages& m_messages;
    std::unique_ptr<CaptionGroups> m_groups;
    qint32 m_count = 0;
    struct Rejected {
        qint32 target;
        Unit unit;
    };
    std::vector<Rejected> m_rejected;
};

qint32 XliffImporter::CheckLanguage(const QString& tag, qint32& lcid) {
    lcid = util::LanguageFromTag(tag);
    if (lcid == 0 || CLanguage(quint32(lcid)).m_name.isEmpty())
        return Fail(kImportUnknownLanguage, Tr(strings::kLanguageNotRecognised));
    if (!m_options.languages.contains(lcid))
        return Fail(kImportLanguageNotInQuestionnaire,
                    Tr(strings::kLanguageNotDefined).arg(CLanguage(quint32(lcid)).m_name));
    return 0;
}

void XliffImporter::WriteIfDifferent(qint32 questionId, qint32 responseId, qint32 language,
                                     const QString& text, qsizetype captionIndex) {
    const QString current = ReadCaption(m_q, questionId, responseId, language);
    if (text == current)
        return;
    WriteCaption(m_q, questionId, responseId, language, text);
    ++m_count;
    if (m_groups && captionIndex >= 0 && language == m_options.referenceLanguage)
        m_groups->Moved(captionIndex, current);
}

void XliffImporter::ImportUnit(const Unit& unit, qint32 target) {
    // As in the tab-separated file, a caption whose key holds a 0 cannot be imported.
    if (unit.questionId == 0 || unit.responseId == 0)
        return;
    if (m_options.copyIdentical) {
        if (!unit.hasTarget)
            return;
        CaptionGroups::Group* group = m_groups->Find(unit.source);
        if (!group)
            return;
        const QList<qsizetype> matches = group->captions; // writes may move captions
        for (qsizetype k : matches)
            if (m_groups->Text(k) == unit.source)
                WriteIfDifferent(m_captions.questionIds[k], m_captions.responseIds[k], target,
                                 unit.target, k);
        return;
    }
    if (m_options.onlyUnchanged) {
        const QString current =
            ReadCaption(m_q, unit.questionId, unit.responseId, m_options.referenceLanguage);
        if (unit.source != current) {
            Unit rejected = unit;
            rejected.source = current;
            m_rejected.push_back({target, std::move(rejected)});
            return;
        }
    }
    if (unit.hasTarget)
        WriteIfDifferent(unit.questionId, unit.responseId, target, unit.target);
}

qint32 XliffImporter::Run(ImportReport* report) {
    QByteArray bytes;
    QString error;
    if (QFileInfo(m_path).size() > kMaxTranslatedFileBytes)
        return Fail(kImportCannotRead, Tr(strings::kFileTooLarge).arg(m_path));
    if (!util::xml::ReadSmallFile(m_path, kMaxTranslatedFileBytes, bytes, error))
        return Fail(kImportCannotRead, Tr(strings::kCannotOpenFile).arg(m_path));
    ParsedDocument document;
    if (!Parse(bytes, document) || document.files.empty())
        return Fail(kImportNoRow, Tr(strings::kNotATranslationFile));
    // Every language is checked before anything is written.
    std::vector<qint32> targets;
    for (const ParsedFile& file : document.files) {
        qint32 source = 0;
        if (const qint32 code = CheckLanguage(file.sourceTag, source); code < 0)
            return code;
        // The file's source is what only-unchanged and copy identical compare with the
        // reference language: another source language cannot be checked against it. Otherwise
        // the units' keys say where the targets go, whatever the source.
        if ((m_options.onlyUnchanged || m_options.copyIdentical) &&
            source != m_options.referenceLanguage)
            return Fail(kImportNoReferenceColumn, Tr(strings::kReferenceLanguageNotFound));
        qint32 target = 0;
        if (!file.targetTag.isEmpty())
            if (const qint32 code = CheckLanguage(file.targetTag, target); code < 0)
                return code;
        targets.push_back(target);
    }
    if (m_options.copyIdentical)
        m_groups = std::make_unique<CaptionGroups>(m_q, m_captions, m_options.referenceLanguage, 1);
    // A file without a target language has no translation to import, but its changed sources
    // are still found.
    for (size_t f = 0; f < document.files.size(); ++f)
        for (const Unit& unit : document.files[f].units)
            ImportUnit(unit, targets[f]);
    Finish(document.version, report);
    return m_count;
}

void XliffImporter::Finish(XliffVersion version, ImportReport* report) {
    if (report)
        report->rejectedRows = qint64(m_rejected.size());
    if (m_rejected.empty()) {
        m_messages.Inform(Tr(strings::kCaptionsModified).arg(m_count));
        return;
    }
    // The units set aside, grouped by target language in the order they came.
    const QString unusedPath = QFileInfo(m_path).absolutePath() + QLatin1Char('/') +
                               QString::fromLatin1(strings::kUnusedStringsXliffFile);
    QByteArray bytes;
    std::vector<qint32> order;
    for (const Rejected& r : m_rejected)
        if (std::find(order.begin(), order.end(), r.target) == order.end())
            order.push_back(r.target);
    bool written = true;
    QString error;
    if (order.size() == 1) {
        std::vector<Unit> units;
        for (const Rejected& r : m_rejected)
            units.push_back(r.unit);
        written = WriteWhole(unusedPath,
                             Document(version, QFileInfo(m_path).fileName(),
                                      m_options.referenceLanguage, order.front(), units),
                             error);
    } else {
        // Units of several target languages: one file per language, named as the export names
        // them.
        const QStringList names = FileLanguageNames(m_q, order);
        for (size_t t = 0; t < order.size(); ++t) {
            const qint32 target = order[t];
            std::vector<Unit> units;
            for (const Rejected& r : m_rejected)
                if (r.target == target)
                    units.push_back(r.unit);
            const QString path = unusedPath.left(unusedPath.size() - 4) + QLatin1Char('.') +
                                 names[qsizetype(t)] + QLatin1String(".xlf");
            written = WriteWhole(path,
                                 Document(version, QFileInfo(m_path).fileName(),
                                          m_options.referenceLanguage, target, units),
                                 error) &&
                      written;
        }
    }
    if (!written)
        m_messages.Error(Tr(strings::kCannotCreateExportFile));
    if (written && report)
        report->unusedStringsPath = unusedPath;
    m_messages.Inform(Tr(strings::kImportedWithRejects)
                          .arg(m_count)
                          .arg(qint64(m_rejected.size()))
                          .arg(unusedPath));
}

} // namespace

bool IsXliffPath(const QString& path) {
    return path.endsWith(QLatin1String(".xlf"), Qt::CaseInsensitive) ||
           path.endsWith(QLatin1String(".xliff"), Qt::CaseInsensitive);
}

bool IsXliffFile(const QString& path) {
    if (IsXliffPath(path))
        return true;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QByteArray head = file.read(512);
    QStringDecoder decode(
        QStringConverter::encodingForData(head, u'<').value_or(QStringConverter::Utf8));
    const QString text = QString(decode(head)).trimmed();
    return text.startsWith(QLatin1String("<?xml")) || text.startsWith(QLatin1String("<xliff"));
}

bool ParseXliffVersion(const QString& text, XliffVersion& version) {
    if (text == QLatin1String("1.2"))
        version = XliffVersion::V12;
    else if (text == QLatin1String("2.0"))
        version = XliffVersion::V20;
    else
        return false;
    return true;
}

QStringList XliffExportPaths(const QString& path, const CQuestionnaire& q,
                             const ExportOptions& options) {
    QStringList paths;
    for (const TargetFile& file : TargetFiles(path, q, options))
        paths.append(file.path);
    return paths;
}

bool ExportXliff(const QString& path, const CQuestionnaire& q, const ExportOptions& options,
                 XliffVersion version, const CaptionList& captions, util::Messages& messages,
                 ExportReport* report, util::Progress* progress) {
    ExportReport result;
    if (options.languages.isEmpty()) {
        messages.Error(Tr(strings::kCannotCreateExportFile));
        if (report)
            *report = result;
        return false;
    }
    // The rows are chosen once over all exported languages, as the tab-separated export does,
    // so that every file holds the same units.
    std::unique_ptr<VisibilityFilter> visibility;
    if (options.excludeNonVisible)
        visibility = std::make_unique<VisibilityFilter>(q);
    RowSelector selector(q, options, visibility.get());
    struct Row {
        qint32 questionId;
        qint32 responseId;
        QString shortcut;
        QList<QString> texts;
    };
    std::vector<Row> rows;
    for (qsizetype k = 0; k < captions.size(); ++k) {
        ExportRow row;
        if (!selector.Select(captions, k, row))
            continue;
        Row kept{row.questionId,
                 row.responseId,
                 row.question ? row.question->m_shortcut : QString(),
                 {}};
        for (const QString* text : *row.texts)
            kept.texts.append(*text);
        rows.push_back(std::move(kept));
    }
    const std::vector<TargetFile> files = TargetFiles(path, q, options);
    util::ProgressScope scope(progress, Tr(strings::kExporting), qint64(files.size()));
    // Every file is written aside first and put in place only once all of them are, so that a
    // file that cannot be written, or a stop, leaves the others as they were too. Putting one in
    // place writes out what was still buffered and renames it: only a failure there leaves the
    // files before it replaced.
    std::vector<std::unique_ptr<util::ReplacingFile>> pending;
    bool ok = true;
    for (size_t f = 0; f < files.size() && ok; ++f) {
        const qsizetype column = files[f].column;
        std::vector<Unit> units;
        units.reserve(rows.size());
        for (const Row& row : rows) {
            Unit unit{row.questionId, row.responseId, row.shortcut, row.texts.front(), {}, false};
            if (column > 0) {
                unit.target = row.texts[column];
                unit.hasTarget = !unit.target.isEmpty();
            }
            units.push_back(std::move(unit));
        }
        const QByteArray bytes =
            Document(version, QFileInfo(path).fileName(), options.languages.front(),
                     column > 0 ? options.languages[column] : 0, units);
        auto file = std::make_unique<util::ReplacingFile>(files[f].path);
        if (!file->Open() || !file->Write(bytes.constData(), bytes.size())) {
            messages.Error(Tr(strings::kCannotWriteFile).arg(files[f].path, file->ErrorString()));
            ok = false;
        }
        pending.push_back(std::move(file));
        if (ok && !scope.Advance(qint64(f + 1))) {
            result.stopped = true;
            ok = false;
        }
    }
    for (size_t f = 0; f < pending.size() && ok; ++f)
        if (!pending[f]->Commit()) {
            messages.Error(
                Tr(strings::kCannotWriteFile).arg(files[f].path, pending[f]->ErrorString()));
            ok = false;
        }
    result.written = ok;
    result.rows = qint64(rows.size());
    if (report)
        *report = result;
    return ok;
}

qint32 ImportXliff(CQuestionnaire& q, const QString& path, const ImportOptions& options,
                   const CaptionList& captions, util::Messages& messages, ImportReport* report) {
    if (report)
        *report = ImportReport();
    XliffImporter importer(q, path, options, captions, messages);
    return importer.Run(report);
}

} // namespace exchange
