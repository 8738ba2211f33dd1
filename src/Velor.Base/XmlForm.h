#pragma once

#include <QtCore/QTextStream>
#include <QtXml/QDomDocument>

/// Writes `document` indented by 4, which is the form of every XML file of this library.
inline void saveIndented(const QDomDocument& document, QTextStream& stream)
{
    constexpr int XmlIndent = 4;
    document.save(stream, XmlIndent, QDomNode::EncodingFromDocument);
}
