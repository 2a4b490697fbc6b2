#include "framework/kel_exception.h"

CKEL_Exception::CKEL_Exception(const std::string& text) : m_sMessage("CKEL_Exception: " + text) {}

CKEL_Exception::~CKEL_Exception() = default;

const char* CKEL_Exception::what() const noexcept
{
    return m_sMessage.c_str();
}
