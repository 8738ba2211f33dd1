#include <Velor.Base/KelbTags.h>
#include <Velor.Base/VelorLog.h>
#include <Velor.Base/VelorVectors.h>
#include <Velor.Base/VelorWildcard.h>

#include <iostream>

// Calls into the library, derives from its classes and catches what crosses its border.
class Listener : public LogListener
{
public:
    void onLogMessage(const std::string& message, VelorLog::Level, bool, const std::string&, bool&) override
    {
        received = message;
    }
    std::string received;
};

// Built before main: the constants of the library are alive by then.
const KelbTags Untagged{QString()};

int main()
{
    VelorLog log("consumer.log");
    Listener listener;
    log.addListener(&listener);
    log.stream(VelorLog::Warning, true) << "length " << length(TVec3d<float>{2, 3, 6});
    const bool matches =
        VelorWildcard::check(QStringLiteral("clips/walk.fbx"), QStringLiteral("*.fbx"), Qt::CaseInsensitive);
    std::cout << listener.received << (matches ? ", matches\n" : ", does not match\n");
    return listener.received == "[WARNING] - length 7" && matches && Untagged.hasTag(KelbTags::DefaultTag)
               ? 0
               : 1;
}
