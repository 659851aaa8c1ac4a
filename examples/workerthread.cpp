// A worker: a thread that takes numbers from a list, factors them, and ends when it is asked to.
//
// It shows the three tools that belong together: the thread runs a member function, the lock guards
// what both threads touch, and events do nothing but wake the one that sleeps.

#include "groundwork/tuarray.h"
#include "groundwork/tucriticalsection.h"
#include "groundwork/tuevent.h"
#include "groundwork/tulist.h"
#include "groundwork/tuthread.h"

#include <iostream>
#include <string>

namespace {

class Factorer
{
public:
    ~Factorer() { Finish(); }

    /// The thread is started by whoever owns the whole object, never by a constructor that others
    /// may still have to finish.
    bool Start() { return m_thread.StartAndWait(); }

    void Add(unsigned int number)
    {
        {
            const TuCriticalSectionAuto guard(m_lock);
            m_numbers.Add(number);
        }
        m_hasWork.Set();
    }

    /// Lets the worker finish what was added, and waits for that.
    bool Finish()
    {
        m_stop.Set();
        return m_thread.WaitUntilTerminate(TuEvent::kInfinite) && m_thread.IsSuccessful();
    }

private:
    TuCheckReturn<bool> work()
    {
        const TuArray<const TuEvent*> either{ &m_hasWork, &m_stop }; // work comes first
        unsigned int which = 0;
        do {
            if (TuEvent::WaitForMultipleEvents(either, TuEvent::kInfinite, &which)
                != TuEvent::eWR_Signaled) {
                return false;
            }
            factorAll();
        } while (which == 0);
        return true;
    }

    void factorAll()
    {
        for (unsigned int number = 0; take(number);) {
            std::string line = std::to_string(number) + " =";
            for (unsigned int factor = 2; factor <= number; ++factor) {
                for (; number % factor == 0; number /= factor) {
                    line += (line.back() == '=' ? " " : " x ") + std::to_string(factor);
                }
            }
            std::cout << line << '\n';
        }
    }

    bool take(unsigned int& number)
    {
        const TuCriticalSectionAuto guard(m_lock);
        if (m_numbers.IsEmpty()) {
            return false;
        }
        number = m_numbers.RemoveHead();
        return true;
    }

    TuCriticalSection m_lock;
    TuList<unsigned int> m_numbers TU_GUARDED_BY(m_lock);
    TuEvent m_hasWork{ false };
    TuEvent m_stop{ true };
    // Last, so that it goes first: what the thread uses is still there when it ends.
    TuThread<Factorer> m_thread{ *this, &Factorer::work, u"Factorer", eTP_BelowNormal };
};

} // namespace

int main()
{
    Factorer factorer;
    if (!factorer.Start()) {
        std::cerr << "workerthread: the system has no thread left\n";
        return 1;
    }
    for (const unsigned int number : { 12u, 97u, 1'001u, 360'360u }) {
        factorer.Add(number);
    }
    return factorer.Finish() ? 0 : 1;
}
