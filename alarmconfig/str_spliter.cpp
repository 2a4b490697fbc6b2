#include "alarmconfig/str_spliter.h"

#include <cstring>

CStrSpliter::CStrSpliter(char* text, const char* separators)
    : m_pLeft(text),
      m_pSeparators(separators)
{
}

char* CStrSpliter::next()
{
    m_pLeft += std::strspn(m_pLeft, m_pSeparators);
    if (*m_pLeft == '\0') {
        return nullptr;
    }
    char* token = m_pLeft;
    m_pLeft += std::strcspn(m_pLeft, m_pSeparators);
    if (*m_pLeft != '\0') {
        *m_pLeft++ = '\0';
    }
    return token;
}
