#include <Velor.Base/KelbTags.h>
#include <Velor.Base/VelorLog.h>
#include <Velor.Base/VelorVectors.h>

// A class of the user's, derived from one of the library's.
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
    const bool isReceived = listener.received == "[WARNING] - length 7";
    return isReceived && Untagged.hasTag(KelbTags::DefaultTag) ? 0 : 1;
}
