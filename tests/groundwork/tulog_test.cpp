#include "groundwork/tuloglistenermanager.h"
#include "groundwork/tumemory.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace {

std::string s_ofStatics;

class Collector : public TuLogListener
{
public:
    explicit Collector(std::string& lines, std::string name)
        : m_lines(lines)
        , m_name(std::move(name))
    {
    }
    void onLog(const SLogLine& line) override
    {
        m_lines += m_name + std::to_string(line.level) + ' ' + line.source.ToUtf8() + ' '
            + std::to_string(line.line) + ' ' + line.text.ToUtf8() + '\n';
        if (m_name == "throws ") {
            throw std::runtime_error("listener");
        }
    }

private:
    std::string& m_lines;
    const std::string m_name;
};

/// Logs before main, when the manager has not been asked for by anybody.
const bool s_logged = [] {
    auto& log = TuLogListenerManager::GetInstance();
    log.RemoveListener(*log.GetDefaultListener());
    const TuSmartPointer<TuLogListener> collector = TuMake<Collector>(s_ofStatics, "");
    log.AddListener(collector);
    log.NotifyListeners(eLL_Trace, u"static", 1, u"before main");
    log.RemoveListener(*collector);
    log.AddListener(log.GetDefaultListener());
    return true;
}();

TEST(TuLogTest, EachLineReachesAllListenersInTheirOrder)
{
    EXPECT_EQ(s_ofStatics, "1 static 1 before main\n");
    auto& log = TuLogListenerManager::GetInstance();
    ASSERT_TRUE(log.RemoveListener(*log.GetDefaultListener()));
    EXPECT_FALSE(log.RemoveListener(*log.GetDefaultListener()));
    std::string lines;
    const TuSmartPointer<TuLogListener> listeners[] = { TuMake<Collector>(lines, "throws "),
        TuMake<Collector>(lines, "second "), TuMake<Collector>(lines, "third ") };
    for (const auto& listener : listeners) {
        log.AddListener(listener);
    }
    log.NotifyListeners(eLL_Error, u"core/x", 679, u"\u00e4");
    EXPECT_TRUE(log.RemoveListener(*listeners[1]));
    log.NotifyListeners(42, u"y", 0, u"");
    EXPECT_EQ(lines,
        "throws 5 core/x 679 \xc3\xa4\nsecond 5 core/x 679 \xc3\xa4\nthird 5 core/x 679 \xc3\xa4\n"
        "throws 42 y 0 \nthird 42 y 0 \n");
    EXPECT_TRUE(log.RemoveListener(*listeners[0]));
    EXPECT_TRUE(log.RemoveListener(*listeners[2]));
    log.AddListener(log.GetDefaultListener());
}

} // namespace
