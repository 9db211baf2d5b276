#include "questionnaire/Question.h"

CQuestion::CQuestion(const CQuestion& other) : CObjet(other) {
    *this = other;
}

CQuestion& CQuestion::operator=(const CQuestion& other) {
    if (this == &other)
        return *this;
    m_id = other.m_id;
    m_shortcut = other.m_shortcut;
    m_visible = other.m_visible;
    m_hasParent = other.m_hasParent;
    m_parentId = other.m_parentId;
    m_shownOnScreen = other.m_shownOnScreen;
    m_shownOnPaper = other.m_shownOnPaper;
    m_type = other.m_type;
    m_long = other.m_long;
    m_short = other.m_short;
    m_instructions = other.m_instructions;
    m_comments = other.m_comments;
    m_versions = other.m_versions;
    m_responses.clear();
    m_responses.reserve(other.m_responses.size());
    for (const auto& response : other.m_responses)
        m_responses.push_back(std::make_unique<CModalite>(*response));
    m_responseIndex = other.m_responseIndex;
    return *this;
}

bool CQuestion::FindModaliteById(qint32 id, const CModalite*& out) const {
    const auto it = m_responseIndex.constFind(id);
    if (it == m_responseIndex.constEnd())
        return false;
    out = m_responses[size_t(*it)].get();
    return true;
}

bool CQuestion::FindAdrModaliteById(qint32 id, CModalite*& out) {
    const auto it = m_responseIndex.constFind(id);
    if (it == m_responseIndex.constEnd())
        return false;
    out = m_responses[size_t(*it)].get();
    return true;
}

int CQuestion::AddModalite(std::unique_ptr<CModalite> response) {
    if (!response || m_responseIndex.contains(response->m_id))
        return -1;
    const int index = int(m_responses.size());
    m_responseIndex.insert(response->m_id, index);
    m_responses.push_back(std::move(response));
    return index;
}

void CQuestion::RemoveModalite(int index) {
    if (index < 0 || size_t(index) >= m_responses.size())
        return;
    m_responses.erase(m_responses.begin() + index);
    RebuildResponseIndex();
}

void CQuestion::RebuildResponseIndex() {
    m_responseIndex.clear();
    m_responseIndex.reserve(qsizetype(m_responses.size()));
    for (size_t i = 0; i < m_responses.size(); ++i)
        m_responseIndex.insert(m_responses[i]->m_id, int(i));
}

bool CQuestion::operator==(const CQuestion& other) const {
    if (m_id != other.m_id || m_shortcut != other.m_shortcut || m_visible != other.m_visible ||
        m_hasParent != other.m_hasParent || m_parentId != other.m_parentId ||
        m_shownOnScreen != other.m_shownOnScreen || m_shownOnPaper != other.m_shownOnPaper ||
        m_type != other.m_type || m_long != other.m_long || m_short != other.m_short ||
        m_instructions != other.m_instructions || m_comments != other.m_comments ||
        m_versions != other.m_versions || m_responses.size() != other.m_responses.size())
        return false;
    for (size_t i = 0; i < m_responses.size(); ++i)
        if (!(*m_responses[i] == *other.m_responses[i]))
            return false;
    return true;
}
