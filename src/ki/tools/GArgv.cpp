#include <ki/tools/GArgv.h>

#include <ki/log/GLog.h>
#include <ki/tools/Token.h>

#include <algorithm>

namespace ki {

using store::Token;
using store::TOKEN_TYPE;

void GArgv::set_arguments(int argc, char** argv) {
    QStringList parts;
    for (int i = 1; i < argc && argv != nullptr; ++i) {
        if (argv[i] == nullptr) continue;
        QString arg = QString::fromLocal8Bit(argv[i]);
        arg.remove(u'"');
        const bool needs_quotes =
            arg.isEmpty() || std::any_of(arg.cbegin(), arg.cend(), [](QChar c) { return c.isSpace(); });
        parts.append(needs_quotes ? u'"' + arg + u'"' : arg);
    }
    source_ = parts.join(u' ');
}

bool GArgv::parse() {
    first_missing_key.clear();
    auto split = Token::token_from_source(source_);
    if (!split.ok()) {
        pp_error(split.message);
        return false;
    }
    const QList<Token>& tokens = split.get();
    QMap<QString, QVariant> parsed;
    for (qsizetype i = 0; i < tokens.size(); ++i) {
        const Token& token = tokens[i];
        if (token.type != TOKEN_TYPE::WORD) {
            if (token.type == TOKEN_TYPE::END) break;
            pp_error("GArgv::parse, unexpected token type");
            return false;
        }
        if (!token.text.startsWith(u'-')) {
            pp_error("GArgv::parse, expected key, got '$'", token.text);
            return false;
        }
        qsizetype dashes = 0;
        while (dashes < token.text.size() && token.text.at(dashes) == u'-') ++dashes;
        const QString key = token.text.mid(dashes);
        if (key.isEmpty()) {
            pp_error("GArgv::parse, empty key");
            return false;
        }
        const Token& next = tokens[i + 1];  // the END token guarantees a successor
        if ((next.type == TOKEN_TYPE::WORD || next.type == TOKEN_TYPE::QUOTE) &&
            !next.text.startsWith(u'-')) {
            parsed.insert(key, next.text);
            ++i;
        } else {
            parsed.insert(key, true);
        }
    }
    for (const QString& key : must_have_keys) {
        if (!parsed.contains(key)) {
            first_missing_key = key;
            pp_error("'$' missing", key);
            return false;
        }
    }
    options = std::move(parsed);
    return true;
}

QString GArgv::value_string(const QString& key, const QString& fallback) const {
    const auto it = options.constFind(key);
    return it == options.cend() ? fallback : it->toString();
}

QString GArgv::build_cmd_line_example(bool with_optional) const {
    QStringList parts;
    for (const QString& key : must_have_keys)
        parts.append(QStringLiteral("--") + key + QStringLiteral(" arg"));
    if (with_optional)
        for (const QString& key : optional_keys)
            parts.append(QStringLiteral("[--") + key + QStringLiteral(" arg]"));
    return parts.join(u' ');
}

void GArgv::show_example(const QString& program_name) const {
    pp_info("example:");
    pp_info("   $ $", program_name, build_cmd_line_example(true));
    if (!first_missing_key.isEmpty()) pp_info("missing --$", first_missing_key);
    pp_info("   $ --help   shows this example", program_name);
}

void GArgv::show(unsigned int indent) const {
    pp(str::xprintF(indent, "GArgv, arguments:$", options.size()));
    for (auto it = options.cbegin(); it != options.cend(); ++it)
        pp(str::xprintF(indent + 3, "$='$'", it.key(), it.value().toString()));
}

}  // namespace ki
