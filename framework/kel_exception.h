#pragma once

#include <exception>
#include <string>

/// The one exception that crosses a handler boundary. The host catches it there and reports
/// `what()`.
class CKEL_Exception : public std::exception {
public:
    /// The message becomes "CKEL_Exception: " followed by `text`.
    explicit CKEL_Exception(const std::string& text);
    ~CKEL_Exception() override;

    /// The message, prefix included; valid as long as the exception.
    const char* what() const noexcept override;

private:
    std::string m_sMessage;
};
