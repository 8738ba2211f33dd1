#include "KelbSynonyms.h"

#include <QtCore/QDebug>
#include <QtCore/QFile>
#include <QtCore/QStringConverter>
#include <QtXml/QDomDocument>

#include <algorithm>
#include <utility>

namespace {

/// Text mode takes each carriage return for a byte of its own, which tears the characters of UTF-16 apart.
bool hasWideUnits(QFile& file)
{
    const auto encoding = QStringConverter::encodingForData(file.peek(4), u'<');
    return encoding && *encoding != QStringConverter::Utf8;
}

bool parse(QDomDocument& document, const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        return false;
    }
    file.setTextModeEnabled(!hasWideUnits(file));
    return static_cast<bool>(document.setContent(&file));
}

} // namespace

const QString KelbSynonyms::DocumentRoot = QStringLiteral("KelbSynonyms");
const QString KelbSynonyms::DocumentSynonymRoot = QStringLiteral("KelbSynonym");

void KelbSynonym::readXML(const QDomElement& element)
{
    const QString values = element.attribute(QStringLiteral("values"));
    if (values.isEmpty()) {
        return;
    }
    for (const QString& word : values.split(QStringLiteral(", "))) {
        mValues.append(word.toLower());
    }
}

bool KelbSynonym::areSynonyms(const QString& first, const QString& second) const
{
    return holds(first.toLower(), second.toLower());
}

QDebug operator<<(QDebug debug, const KelbSynonym& group)
{
    const QDebugStateSaver saver(debug);
    return debug.nospace() << "KelbSynonym(" << group.mValues.join(QStringLiteral(", ")) << ')';
}

bool KelbSynonym::holds(const QString& lowerFirst, const QString& lowerSecond) const
{
    return mValues.contains(lowerFirst) && mValues.contains(lowerSecond);
}

KelbSynonyms::KelbSynonyms(const KelbSynonyms& other)
{
    mGroups.reserve(other.mGroups.size());
    for (const KelbSynonym* group : other.mGroups) {
        mGroups.append(new KelbSynonym(*group));
    }
}

KelbSynonyms::KelbSynonyms(KelbSynonyms&& other) noexcept
    : mGroups(std::exchange(other.mGroups, {}))
{}

KelbSynonyms& KelbSynonyms::operator=(KelbSynonyms other) noexcept
{
    swap(other);
    return *this;
}

KelbSynonyms::~KelbSynonyms() { qDeleteAll(mGroups); }

bool KelbSynonyms::load(const QString& path)
{
    QDomDocument document;
    if (!parse(document, path)) {
        return false;
    }
    const QDomElement root = document.documentElement();
    if (root.tagName() != DocumentRoot) {
        return false;
    }
    for (QDomElement element = root.firstChildElement(); !element.isNull();
         element = element.nextSiblingElement()) {
        if (element.tagName() != DocumentSynonymRoot) {
            continue;
        }
        KelbSynonym group;
        group.readXML(element);
        if (!group.isEmpty()) {
            mGroups.append(new KelbSynonym(std::move(group)));
        }
    }
    return true;
}

bool KelbSynonyms::areSynonyms(const QString& first, const QString& second) const
{
    const QString lowerFirst = first.toLower();
    const QString lowerSecond = second.toLower();
    return std::any_of(mGroups.begin(), mGroups.end(),
                       [&](const KelbSynonym* group) { return group->holds(lowerFirst, lowerSecond); });
}

QDebug operator<<(QDebug debug, const KelbSynonyms& synonyms)
{
    const QDebugStateSaver saver(debug);
    debug.nospace() << "KelbSynonyms(";
    const char* separator = "";
    for (const KelbSynonym* group : synonyms.mGroups) {
        debug << separator << *group;
        separator = ", ";
    }
    return debug << ')';
}
