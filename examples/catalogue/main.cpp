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

int fail(const QString& message, ExitCode code = Failed)
{
    QTextStream(stderr) << "catalogue: " << message << '\n';
    return code;
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
    parser.addOptions({options.synonyms, options.ignoreGender, options.trace});
    parser.addHelpOption();
    parser.addVersionOption();
}

/// The tags of all words, which are separated by commas; blanks around a tag do not count.
KelbTags tagsOf(const QStringList& words)
{
    QStringList tags = words.join(u',').split(u',');
    for (QString& tag : tags) {
        tag = tag.trimmed();
    }
    return tags.join(u',');
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

int run(const QCommandLineParser& parser, const Options& options)
{
    QStringList words = parser.positionalArguments();
    if (words.size() < 2) {
        return fail(QStringLiteral("a catalogue and a query are needed; see --help"));
    }
    if (parser.isSet(options.ignoreGender) && !parser.isSet(options.synonyms)) {
        return fail(QStringLiteral("--ignore-gender needs --synonyms, which tell the words of gender"));
    }
    QString error;
    const std::optional<QList<CatalogueItem>> items = loadCatalogue(words.takeFirst(), error);
    if (!items) {
        return fail(error);
    }
    Query query{tagsOf(words), {}, parser.isSet(options.ignoreGender)};
    const QString synonyms = parser.value(options.synonyms);
    if (parser.isSet(options.synonyms) && !query.synonyms.emplace().load(synonyms)) {
        return fail(QStringLiteral("%1 cannot be opened or is no synonyms file").arg(synonyms));
    }
    const QList<Hit> hits = search(*items, query);
    if (!print(hits)) {
        return fail(QStringLiteral("cannot write to standard output"));
    }
    const QString trace = parser.value(options.trace);
    if (parser.isSet(options.trace) && !writeTrace(trace, hits, query)) {
        return fail(QStringLiteral("cannot write a trace to %1").arg(trace));
    }
    if (hits.isEmpty()) {
        return fail(QStringLiteral("no item has a tag that meets \"%1\"").arg(query.tags.toString()),
                    NothingFound);
    }
    return Found;
}

} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("catalogue"));
    QCoreApplication::setApplicationVersion(VelorVersion::current().toString());
    const Options options;
    QCommandLineParser parser;
    describe(parser, options);
    if (!parser.parse(QCoreApplication::arguments())) {
        return fail(parser.errorText());
    }
    parser.process(application);
    return run(parser, options);
}
