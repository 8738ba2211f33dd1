#include <Velor.Base/VelorDebugTrace.h>

#include <QtCore/QStringList>
#include <QtXml/QDomDocument>

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace {

void require(bool holds)
{
    if (!holds) {
        std::abort();
    }
}

bool isSameButForReplacedUnits(const QString& text, const QString& original)
{
    return std::equal(text.begin(), text.end(), original.begin(), original.end(), [](QChar unit, QChar old) {
        return unit == old || unit == QChar::ReplacementCharacter;
    });
}

/// Children stand in the order of their names, in a node and in its element.
void expectChildren(const QDomElement& element, QStringList names, const QString& description)
{
    names.sort();
    names.removeDuplicates();
    QDomElement child = element.firstChildElement();
    for (const QString& name : names) {
        require(isSameButForReplacedUnits(child.attribute(QStringLiteral("name")), name));
        require(isSameButForReplacedUnits(child.attribute(QStringLiteral("description")), description));
        child = child.nextSiblingElement();
    }
    require(child.isNull());
}

} // namespace

/// Names and descriptions in a trace are whatever the application has met. The text of its element must be
/// one that a parser reads, and give back each unit that XML can carry. The input is UTF-16: the lines are
/// the names of the nodes, and the whole of it their description.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    QString text;
    for (std::size_t i = 0; i + 1 < size; i += 2) {
        text += QChar(static_cast<char16_t>(data[i] | data[i + 1] << 8));
    }
    const auto root = QSharedPointer<VelorDebugGenericNode<void>>::create(QString(), text);
    const QStringList names = text.split(u'\n');
    for (const QString& name : names) {
        root->addGroup(name, text);
    }
    QDomDocument document;
    document.appendChild(root->toXml(document));
    QDomDocument readBack;
    require(static_cast<bool>(readBack.setContent(document.toString(4))));
    expectChildren(readBack.documentElement(), names, text);
    root->clear();
    return 0;
}
