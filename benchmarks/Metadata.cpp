#include "Pairs.h"

#include <Velor.Base/KelbSynonyms.h>
#include <Velor.Base/KelbTags.h>
#include <Velor.Base/VelorIODevice.h>
#include <Velor.Base/VelorWildcard.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QRegularExpression>
#include <QtXml/QDomDocument>

#include <string>

namespace {

QStringList differentTags(int count)
{
    QStringList tags;
    for (int i = 0; i < count; ++i) {
        // A large prime scatters the numbers, so that the list has to be sorted.
        tags.append(QStringLiteral("Tag %1").arg(qint64(i) * 7919 % 1'000'003));
    }
    return tags;
}

bench::Work tagsOf(const QString& text)
{
    return [text] {
        KelbTags tags;
        tags.fromString(text);
        bench::keep(tags);
    };
}

void pairTags(const char* work, int count)
{
    const QString text = differentTags(count).join(u',');
    bench::pair(work, "Qt's split, removeDuplicates, sort", tagsOf(text), [text] {
        QStringList tags = text.split(u',', Qt::SkipEmptyParts);
        tags.removeDuplicates();
        tags.sort(Qt::CaseInsensitive);
        bench::keep(tags);
    });
}

/// A file of groups with three words each.
QString synonymsFile(int words)
{
    const QString path = QString::fromStdString(bench::scratch("synonyms.xml"));
    QFile file(path);
    bench::demand(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write("<KelbSynonyms>\n");
    for (int i = 0; i < words / 3; ++i) {
        file.write(
            QStringLiteral("<KelbSynonym values=\"Walk %1, stroll %1, March %1\"/>\n").arg(i).toUtf8());
    }
    file.write("</KelbSynonyms>\n");
    bench::demand(file.flush());
    return path;
}

bench::Work loadSynonyms(int words)
{
    return [path = synonymsFile(words)] {
        KelbSynonyms synonyms;
        bench::demand(synonyms.load(path));
    };
}

void pairSynonyms()
{
    const bench::Work ours = loadSynonyms(30'000);
    bench::pair("`KelbSynonyms::load`, 30,000 words", "Qt's document tree of the same file alone", ours,
                [path = QString::fromStdString(bench::scratch("synonyms.xml"))] {
                    QFile device(path);
                    QDomDocument document;
                    bench::demand(device.open(QIODevice::ReadOnly | QIODevice::Text) &&
                                  document.setContent(&device));
                });
}

void pairWildcards()
{
    QStringList names;
    for (int i = 0; i < 10'000; ++i) {
        names.append(QStringLiteral("/clips/walk_%1.bvh").arg(i));
    }
    QList<QString> wildcards;
    for (int i = 0; i < 10; ++i) {
        wildcards.append(QStringLiteral("*_%1?.fbx").arg(i));
    }
    bench::pair(
        "10,000 names against 10 wildcards", "one compiled `QRegularExpression` each",
        [=] {
            for (const QString& name : names) {
                bench::keep(VelorWildcard::check(name, wildcards, Qt::CaseInsensitive));
            }
        },
        [=] {
            QList<QRegularExpression> compiled;
            for (const QString& wildcard : wildcards) {
                compiled.append(QRegularExpression::fromWildcard(wildcard, Qt::CaseInsensitive));
            }
            for (const QString& name : names) {
                const QString file = QFileInfo(name).fileName();
                for (const QRegularExpression& expression : compiled) {
                    bench::keep(expression.match(file).hasMatch());
                }
            }
        });
}

void pairs()
{
    pairTags("`KelbTags::fromString`, 20,000 tags", 20'000);
    pairTags("`KelbTags::fromString`, 6 tags", 6);
    pairSynonyms();
    pairWildcards();
}

void growths()
{
    bench::growth("`KelbTags::fromString`, n tags", {10, 100, 1000, 10'000, 100'000},
                  [](int count) { return tagsOf(differentTags(count).join(u',')); });
    bench::growth("`KelbSynonyms::load`, n words", {1000, 10'000, 100'000, 1'000'000}, loadSynonyms);
}

const bench::Family metadata("Metadata", pairs, growths);

} // namespace
