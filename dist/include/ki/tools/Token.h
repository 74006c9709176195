#pragma once
// One lexical piece of a command line: a word, a double-quoted text or the end marker.

#include <ki/GError.h>

#include <QList>
#include <QString>

#include <string>

namespace ki::store {

enum class TOKEN_TYPE : unsigned int {
    WORD,   ///< a run of non-space characters
    QUOTE,  ///< the text between two double quotes, spaces kept, quotes dropped
    END,    ///< closes every token list
};

struct Token {
    TOKEN_TYPE type = TOKEN_TYPE::END;
    QString text;

    /// Splits `source` at white space; double quotes group a text with spaces. The list ends with
    /// an END token. A source that ends inside a quote is refused (class KIR).
    static GSysResult<QList<Token>> token_from_source(const QString& source);

    static const char* type_to_string(TOKEN_TYPE type);
    /// "<<<WORD>>> text"
    std::string to_string() const;
    bool operator==(const Token&) const = default;
};

}  // namespace ki::store
