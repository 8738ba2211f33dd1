#include "Search.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>
#include <QtCore/QTextStream>

#include <algorithm>
#include <cstdio>

namespace {

enum ExitCode
{
    Found = 0,
    NothingFound = 1,
    Failed = 2
};

struct Arguments
{
    QString catalogue;
    std::optional<QString> synonyms;
    std::optional<QString> trace;
    Query query;
};

int fail(const QString& message)
{
    QTextStream(stderr) << "catalogue: " << message << '\n';
    return Failed;
}

struct Options
{
    QCommandLineOption synonyms{QStringLiteral("synonyms"),
                                QStringLiteral("Let words meet that stand in one group of this file."),
                                QStringLiteral("FILE")};
    QCommandLineOption ignoreGender{
        QStringLiteral("ignore-gender"),
        QStringLiteral("Leave out tags that the synonyms tie to male or female.")};
    QCommandLineOption trace{QStringLiteral("trace"),
                             QStringLiteral("Write to this file, as XML, why each item was found."),
                             QStringLiteral("FILE")};
    QCommandLineOption help{{QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Show this text.")};
};

void describe(QCommandLineParser& parser, const Options& options)
{
    parser.setApplicationDescription(QStringLiteral(
        "Lists the items of a catalogue whose tags, or whose category's tags, meet the query's tags,\n"
        "those with the most matches first. Ends with 0 when items were found, 1 when none was, and\n"
        "2 after an error. An empty query finds the items without tags of their own."));
    parser.addPositionalArgument(QStringLiteral("CATALOGUE"), QStringLiteral("The catalogue, an XML file."));
    parser.addPositionalArgument(QStringLiteral("QUERY"), QStringLiteral("Tags, separated by commas."),
                                 QStringLiteral("QUERY..."));
    parser.addOptions({options.synonyms, options.ignoreGender, options.trace, options.help});
}

std::optional<QString> valueOf(const QCommandLineParser& parser, const QCommandLineOption& option)
{
    return parser.isSet(option) ? std::optional(parser.value(option)) : std::nullopt;
}

/// The arguments, or one line in `error`. Ends the program itself for --help and --version.
std::optional<Arguments> parseArguments(const QStringList& words, QString& error)
{
    const Options options;
    QCommandLineParser parser;
    describe(parser, options);
    const QCommandLineOption version = parser.addVersionOption();
    if (!parser.parse(words)) {
        error = parser.errorText();
        return {};
    }
    if (parser.isSet(options.help)) {
        parser.showHelp();
    }
    if (parser.isSet(version)) {
        parser.showVersion();
    }
    QStringList positional = parser.positionalArguments();
    if (positional.size() < 2) {
        error = QStringLiteral("a catalogue and a query are needed; see --help");
        return {};
    }
    const bool ignoresGender = parser.isSet(options.ignoreGender);
    if (ignoresGender && !parser.isSet(options.synonyms)) {
        error = QStringLiteral("--ignore-gender needs --synonyms, which tell the words of gender");
        return {};
    }
    const QString catalogue = positional.takeFirst();
    const Query query{positional.join(u','), {}, ignoresGender};
    return Arguments{catalogue, valueOf(parser, options.synonyms), valueOf(parser, options.trace), query};
}

/// False when standard output does not take the list, as on a full disk.
bool print(const QList<Hit>& hits)
{
    qsizetype width = 0;
    for (const Hit& hit : hits) {
        width = std::max(width, hit.item.category.size() + 1 + hit.item.name.size());
    }
    QTextStream out(stdout);
    for (const Hit& hit : hits) {
        QStringList matches = hit.matches;
        matches.removeDuplicates();
        out << QString::number(hit.matches.size()).rightJustified(3) << "  "
            << (hit.item.category + u'/' + hit.item.name).leftJustified(width) << "  "
            << matches.join(QStringLiteral(", "));
        if (hit.item.version > VelorVersion::current()) {
            out << "  (needs version " << hit.item.version.toString() << ')';
        }
        out << '\n';
    }
    out.flush();
    return out.status() == QTextStream::Ok && std::fflush(stdout) == 0;
}

} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationVersion(VelorVersion::current().toString());
    QString error;
    std::optional<Arguments> arguments = parseArguments(QCoreApplication::arguments(), error);
    if (!arguments) {
        return fail(error);
    }
    const std::optional<QList<CatalogueItem>> items = loadCatalogue(arguments->catalogue, error);
    if (!items) {
        return fail(error);
    }
    if (arguments->synonyms && !arguments->query.synonyms.emplace().load(*arguments->synonyms)) {
        return fail(QStringLiteral("%1 cannot be opened or is no synonyms file").arg(*arguments->synonyms));
    }
    const QList<Hit> hits = search(*items, arguments->query);
    if (!print(hits)) {
        return fail(QStringLiteral("cannot write to standard output"));
    }
    if (arguments->trace && !writeTrace(*arguments->trace, hits, arguments->query)) {
        return fail(QStringLiteral("cannot write a trace to %1").arg(*arguments->trace));
    }
    return hits.isEmpty() ? NothingFound : Found;
}
