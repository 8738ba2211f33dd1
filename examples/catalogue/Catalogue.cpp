#include "Catalogue.h"

#include <QtCore/QFile>
#include <QtCore/QXmlStreamReader>
#include <QtXml/QDomDocument>

using namespace Qt::StringLiterals;

namespace {

CatalogueItem readItem(const QDomElement& element, const QString& category, const KelbTags& categoryTags)
{
    CatalogueItem item{category, element.attribute(u"name"_s), element.attribute(u"version"_s), {}};
    item.tags.readXML(element);
    item.tags.learnFromTags(categoryTags);
    return item;
}

void readCategory(const QDomElement& element, QList<CatalogueItem>& items)
{
    const QString name = element.attribute(u"name"_s);
    VelorCategoryTags tags;
    tags.readXML(element);
    const QString itemTag = u"Item"_s;
    for (QDomElement child = element.firstChildElement(itemTag); !child.isNull();
         child = child.nextSiblingElement(itemTag)) {
        items.append(readItem(child, name, tags));
    }
}

/// Where and why `xml` is broken.
QString xmlError(const QByteArray& xml)
{
    QXmlStreamReader reader(xml);
    while (!reader.atEnd()) {
        reader.readNext();
    }
    return u"line %1, column %2: %3"_s.arg(QString::number(reader.lineNumber()),
                                           QString::number(reader.columnNumber()),
                                           reader.errorString().simplified());
}

} // namespace

std::optional<QList<CatalogueItem>> loadCatalogue(const QString& path, QString& error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        error = u"cannot open %1: %2"_s.arg(path, file.errorString());
        return {};
    }
    const QByteArray xml = file.readAll();
    QDomDocument document;
    if (!document.setContent(xml)) {
        error = u"%1 is no well-formed XML: %2"_s.arg(path, xmlError(xml));
        return {};
    }
    const QDomElement root = document.documentElement();
    if (root.tagName() != u"Catalogue"_s) {
        error = u"%1 is no catalogue: its document element is \"%2\""_s.arg(path, root.tagName());
        return {};
    }
    QList<CatalogueItem> items;
    const QString categoryTag = u"Category"_s;
    for (QDomElement child = root.firstChildElement(categoryTag); !child.isNull();
         child = child.nextSiblingElement(categoryTag)) {
        readCategory(child, items);
    }
    return items;
}
