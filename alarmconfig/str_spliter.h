#pragma once

/// Splits a writable text into tokens, in place. Each object keeps its own position, so several may
/// be at work at once, in one thread or many. Empty tokens are skipped.
class CStrSpliter {
public:
    /// Both texts must outlive the object; `text` is cut up by `next`. Any character of
    /// `separators` separates.
    CStrSpliter(char* text, const char* separators);

    /// The next token, or null when there is none left.
    char* next();

private:
    char* m_pLeft;
    const char* m_pSeparators;
};
