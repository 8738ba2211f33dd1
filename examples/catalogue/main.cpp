#include "Search.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>
#include <QtCore/QTextStream>

#include <algorithm>
#include <cstdio>

using namespace Qt::StringLiterals;

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
    QCommandLineOption synonyms{u"synonyms"_s, u"Let words meet that stand in one group of this file."_s,
                                u"FILE"_s};
    QCommandLineOption ignoreGender{u"ignore-gender"_s,
                                    u"Leave out tags that the synonyms tie to male or female."_s};
    QCommandLineOption trace{u"trace"_s, u"Write to this file, as XML, why each item was found."_s,
                             u"FILE"_s};
};

void describe(QCommandLineParser& parser, const Options& options)
{
    parser.setApplicationDescription(
        u"Lists the items of a catalogue whose tags, or whose category's tags, meet the query's tags,\n"
        "those with the most matches first. Ends with 0 when items were found, 1 when none was, and\n"
        "2 after an error. An empty query finds the items without tags of their own."_s);
    parser.addPositionalArgument(u"CATALOGUE"_s, u"The catalogue, an XML file."_s);
    parser.addPositionalArgument(u"QUERY"_s, u"Tags, separated by commas."_s, u"QUERY..."_s);
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
            << matches.join(u", "_s);
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
        return fail(u"a catalogue and a query are needed; see --help"_s);
    }
    if (parser.isSet(options.ignoreGender) && !parser.isSet(options.synonyms)) {
        return fail(u"--ignore-gender needs --synonyms, which tell the words of gender"_s);
    }
    QString error;
    const std::optional<QList<CatalogueItem>> items = loadCatalogue(words.takeFirst(), error);
    if (!items) {
        return fail(error);
    }
    Query query{tagsOf(words), {}, parser.isSet(options.ignoreGender)};
    const QString synonyms = parser.value(options.synonyms);
    if (parser.isSet(options.synonyms) && !query.synonyms.emplace().load(synonyms)) {
        return fail(u"%1 cannot be opened or is no synonyms file"_s.arg(synonyms));
    }
    const QList<Hit> hits = search(*items, query);
    if (!print(hits)) {
        return fail(u"cannot write to standard output"_s);
    }
    const QString trace = parser.value(options.trace);
    if (parser.isSet(options.trace) && !writeTrace(trace, hits, query)) {
        return fail(u"cannot write a trace to %1"_s.arg(trace));
    }
    if (hits.isEmpty()) {
        return fail(u"no item has a tag that meets \"%1\""_s.arg(query.tags.toString()), NothingFound);
    }
    return Found;
}

} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(u"catalogue"_s);
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
