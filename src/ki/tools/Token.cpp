#include <ki/tools/Token.h>

namespace ki::store {

GSysResult<QList<Token>> Token::token_from_source(const QString& source) {
    constexpr QChar QUOTE_CHAR = u'"';
    QList<Token> tokens;
    const qsizetype n = source.size();
    qsizetype i = 0;
    while (i < n) {
        const QChar c = source.at(i);
        if (c.isSpace()) {
            ++i;
        } else if (c == QUOTE_CHAR) {
            const qsizetype close = source.indexOf(QUOTE_CHAR, i + 1);
            if (close < 0) {
                GError err;
                err.set_error(EC_KIR, 1, "GArgv::parse, unterminated quote in argument string");
                return err;
            }
            tokens.append({TOKEN_TYPE::QUOTE, source.mid(i + 1, close - i - 1)});
            i = close + 1;
        } else {
            const qsizetype start = i;
            while (i < n && !source.at(i).isSpace() && source.at(i) != QUOTE_CHAR) ++i;
            tokens.append({TOKEN_TYPE::WORD, source.mid(start, i - start)});
        }
    }
    tokens.append({TOKEN_TYPE::END, {}});
    return tokens;
}

const char* Token::type_to_string(TOKEN_TYPE type) {
    switch (type) {
        case TOKEN_TYPE::WORD:
            return "WORD";
        case TOKEN_TYPE::QUOTE:
            return "QUOTE";
        case TOKEN_TYPE::END:
            return "END";
    }
    return "UNKNOWN";
}

std::string Token::to_string() const {
    return str::xprintF(0, "<<<$>>> $", type_to_string(type), text);
}

}  // namespace ki::store
