#include "questionnaire/Questionnaire.h"

namespace {
const CLocalisedText kNoCustomMessages;

bool IsSystemMessage(qint32 messageId) {
    return messageId >= questionnaire::kFirstSystemMessage &&
           messageId <= questionnaire::kLastSystemMessage;
}

template <class T>
bool SameObjects(const std::vector<std::unique_ptr<T>>& a,
                 const std::vector<std::unique_ptr<T>>& b) {
    if (a.size() != b.size())
        return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (!(*a[i] == *b[i]))
            return false;
    return true;
}

template <class T>
void CopyObjects(const std::vector<std::unique_ptr<T>>& from, std::vector<std::unique_ptr<T>>& to) {
    to.clear();
    to.reserve(from.size());
    for (const auto& object : from)
        to.push_back(std::make_unique<T>(*object));
}
} // namespace

CQuestionnaire::CQuestionnaire(const CQuestionnaire& other) : CObjet(other) {
    CopyFrom(other);
}

CQuestionnaire& CQuestionnaire::operator=(const CQuestionnaire& other) {
    if (this != &other)
        CopyFrom(other);
    return *this;
}

CQuestionnaire::~CQuestionnaire() = default;

void CQuestionnaire::CopyFrom(const CQuestionnaire& other) {
    m_lastError = other.m_lastError;
    m_status = other.m_status;
    m_name = other.m_name;
    m_exchangeFolder = other.m_exchangeFolder;
    m_allowInstructionsAndComments = other.m_allowInstructionsAndComments;
    CopyObjects(other.m_languages, m_languages);
    CopyObjects(other.m_versions, m_versions);
    CopyObjects(other.m_questions, m_questions);
    CopyObjects(other.m_filtres, m_filtres);
    m_customMessages = other.m_customMessages;
    PrepareLinks();
}

void CQuestionnaire::Clear() {
    m_name.clear();
    m_allowInstructionsAndComments = true;
    DeleteArray(m_languages);
    DeleteArray(m_versions);
    DeleteArray(m_questions);
    DeleteArray(m_filtres);
    for (CLocalisedText& messages : m_customMessages)
        messages.Clear();
    PrepareLinks();
}

void CQuestionnaire::PrepareLinks() const {
    m_questionIndex.clear();
    m_questionIndex.reserve(qsizetype(m_questions.size()));
    for (size_t i = 0; i < m_questions.size(); ++i)
        m_questionIndex.insert(m_questions[i]->m_id, int(i));
    m_filtreIndex.clear();
    for (size_t i = 0; i < m_filtres.size(); ++i)
        m_filtreIndex.insert(m_filtres[i]->m_id, int(i));
    m_versionIndex.clear();
    for (size_t i = 0; i < m_versions.size(); ++i)
        m_versionIndex.insert(m_versions[i]->m_id, int(i));
}

bool CQuestionnaire::FindQuestionById(qint32 id, int& index) const {
    const auto it = m_questionIndex.constFind(id);
    if (it == m_questionIndex.constEnd())
        return false;
    index = *it;
    return true;
}

int CQuestionnaire::AddQuestion(CQuestion* question) {
    return AddQuestion(std::unique_ptr<CQuestion>(question));
}

int CQuestionnaire::AddQuestion(std::unique_ptr<CQuestion> question) {
    if (!question || m_questionIndex.contains(question->m_id))
        return -1;
    const int index = int(m_questions.size());
    m_questionIndex.insert(question->m_id, index);
    m_questions.push_back(std::move(question));
    return index;
}

bool CQuestionnaire::FindRoutingById(qint32 id, int& index) const {
    const auto it = m_filtreIndex.constFind(id);
    if (it == m_filtreIndex.constEnd())
        return false;
    index = *it;
    return true;
}

int CQuestionnaire::AddFiltre(std::unique_ptr<CFiltre> routing) {
    if (!routing || m_filtreIndex.contains(routing->m_id))
        return -1;
    const int index = int(m_filtres.size());
    m_filtreIndex.insert(routing->m_id, index);
    m_filtres.push_back(std::move(routing));
    return index;
}

bool CQuestionnaire::HasLanguage(qint32 lcid) const {
    for (const auto& language : m_languages)
        if (language->m_id == lcid)
            return true;
    return false;
}

int CQuestionnaire::AddLanguage(CLanguage* language) {
    return AddLanguage(std::unique_ptr<CLanguage>(language));
}

int CQuestionnaire::AddLanguage(std::unique_ptr<CLanguage> language) {
    if (!language || HasLanguage(language->m_id))
        return -1;
    m_languages.push_back(std::move(language));
    return int(m_languages.size()) - 1;
}

qint32 CQuestionnaire::GetDefaultLanguage() const {
    for (auto it = m_languages.rbegin(); it != m_languages.rend(); ++it)
        if ((*it)->m_isMain)
            return (*it)->m_id;
    return m_languages.empty() ? 0 : m_languages.front()->m_id;
}

void CQuestionnaire::SetDefaultLanguage(qint32 lcid) {
    for (auto& language : m_languages)
        language->m_isMain = language->m_id == lcid;
}

bool CQuestionnaire::FindVersionById(qint32 id, int& index) const {
    const auto it = m_versionIndex.constFind(id);
    if (it == m_versionIndex.constEnd())
        return false;
    index = *it;
    return true;
}

int CQuestionnaire::AddVersion(std::unique_ptr<CVersion> version) {
    if (!version || m_versionIndex.contains(version->m_id))
        return -1;
    const int index = int(m_versions.size());
    m_versionIndex.insert(version->m_id, index);
    m_versions.push_back(std::move(version));
    return index;
}

QString CQuestionnaire::GetErrorMessage(qint32 language, qint32 messageId) const {
    if (!IsSystemMessage(messageId))
        return {};
    const QString& custom = GetCustomErrorMessages(messageId).Get(language);
    return custom.isEmpty() ? GetStandardErrorMessage(language, messageId) : custom;
}

QString CQuestionnaire::GetStandardErrorMessage(qint32 language, qint32 messageId) {
    return questionnaire::StandardSystemMessage(language, messageId);
}

void CQuestionnaire::SetCustomErrorMessage(qint32 language, qint32 messageId, const QString& text) {
    if (!IsSystemMessage(messageId))
        return;
    CLocalisedText& messages =
        m_customMessages[size_t(messageId - questionnaire::kFirstSystemMessage)];
    if (text.isEmpty())
        messages.Remove(language);
    else
        messages.Set(language, text);
}

const CLocalisedText& CQuestionnaire::GetCustomErrorMessages(qint32 messageId) const {
    if (!IsSystemMessage(messageId))
        return kNoCustomMessages;
    return m_customMessages[size_t(messageId - questionnaire::kFirstSystemMessage)];
}

CLocalisedText* CQuestionnaire::GetAdrCustomErrorMessages(qint32 messageId) {
    if (!IsSystemMessage(messageId))
        return nullptr;
    return &m_customMessages[size_t(messageId - questionnaire::kFirstSystemMessage)];
}

bool CQuestionnaire::operator==(const CQuestionnaire& other) const {
    return m_name == other.m_name &&
           m_allowInstructionsAndComments == other.m_allowInstructionsAndComments &&
           SameObjects(m_languages, other.m_languages) &&
           SameObjects(m_versions, other.m_versions) &&
           SameObjects(m_questions, other.m_questions) && SameObjects(m_filtres, other.m_filtres) &&
           m_customMessages == other.m_customMessages;
}
