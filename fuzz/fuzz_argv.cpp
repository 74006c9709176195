// The command line, twice: as one source text for the parser, and as separate arguments that
// set_arguments joins, which must split back into the very same pieces.
#include <ki/tools/GArgv.h>
#include <ki/tools/Token.h>

#include <string>
#include <vector>

#include "fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool quiet = fuzz::quiet_log();
    (void)quiet;
    ki::GArgv argv(fuzz::text(data, size));
    argv.set_optional_keys({QStringLiteral("__log_level"), QStringLiteral("__bounds")});
    if (argv.parse()) {
        for (auto it = argv.get_options().cbegin(); it != argv.get_options().cend(); ++it)
            fuzz::require(!it.key().isEmpty() && !it.key().startsWith(u'-'),
                          "keys are stored without dashes");
        argv.show(0);
    }
    (void)argv.build_cmd_line_example(true);

    // Zero bytes separate the arguments, as they do in the process's argument block.
    std::vector<std::string> pieces(1);
    for (size_t i = 0; i < size && pieces.size() < 64; ++i) {
        if (data[i] == 0)
            pieces.emplace_back();
        else
            pieces.back().push_back(static_cast<char>(data[i]));
    }
    std::vector<char*> args{const_cast<char*>("quenlo")};
    for (std::string& piece : pieces) args.push_back(piece.data());
    args.push_back(nullptr);
    ki::GArgv joined;
    joined.set_arguments(static_cast<int>(args.size()) - 1, args.data());
    const ki::GSysResult<QList<ki::store::Token>> tokens =
        ki::store::Token::token_from_source(joined.source());
    fuzz::require(tokens.ok(), "a joined command line always splits");
    fuzz::require(tokens.value.size() == static_cast<qsizetype>(pieces.size()) + 1, "one token per argument");
    for (size_t i = 0; i < pieces.size(); ++i) {
        QString expected = QString::fromLocal8Bit(pieces[i].c_str());
        expected.remove(u'"');
        fuzz::require(tokens.value[static_cast<qsizetype>(i)].text == expected,
                      "an argument splits back unchanged");
    }
    (void)joined.parse();
    return 0;
}
