#pragma once

#include "platform/platformclock.h"
#include "support/datatreeprobe.h"
#include "support/environment.h"
#include "support/temporaryfolder.h"
#include "tamesh/meshtext.h"
#include "tamesh/session/commandparser.h"
#include "tamesh/session/session.h"

#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <string>
#include <thread>
#include <vector>

/// Keeps what a session writes, and can interrupt it in the midst of a command: at a look at the
/// clock, which progress takes on the thread that works.
class SessionConsole final : public tamesh::IConsole
{
public:
    bool WriteOutput(std::string_view text) override
    {
        output += text;
        if (!interruptBy.empty() && text.find(interruptBy) != text.npos) {
            interrupt.Set();
        }
        return !isFull;
    }
    void WriteError(std::string_view text) override { error += text; }
    bool IsErrorTerminal() const override { return false; }
    unsigned int GetErrorWidth() const override { return 80; }
    std::uint64_t GetMilliseconds() const override
    {
        if (++looks == interruptAt) {
            TuEvent(interrupt).Set(); // copies share the flag
        }
        return 1000;
    }
    const TuEvent& GetInterrupt() const override { return interrupt; }

    std::string output;
    std::string error;
    bool isFull = false;
    std::string interruptBy; // a result
    mutable std::atomic<unsigned int> looks = 0;
    std::atomic<unsigned int> interruptAt = 0; // which look; 0 for none
    TuEvent interrupt{ true };
};

/// A folder with meshes, and a console. In what is said to the program, and in what it says, the
/// folder is "@".
class SessionFolder : public testing::Test
{
protected:
    SessionFolder()
    {
        SetEnvironment("TABASE_REGISTRY_FOLDER", m_folder.GetPath("registry").string());
    }

    void writeMesh(const std::string& name, const tamesh::Mesh& mesh) const
    {
        m_folder.WriteAll(name, WriteMeshText(mesh));
    }
    std::string expand(std::string text) const
    {
        for (std::size_t at = text.find('@'); at != text.npos; at = text.find('@', at)) {
            const std::size_t end = std::min(text.find_first_of(" ;&\n", at), text.size());
            const std::string name = (m_folder / text.substr(at + 1, end - at - 1)).ToUtf8();
            text.replace(at, end - at, tamesh::QuoteWord(name));
            at += name.size();
        }
        return text;
    }
    /// What was written to the stream, which is then empty, with single blanks.
    std::string take(std::string& stream) const
    {
        std::string text = std::exchange(stream, {});
        const std::string name = (m_folder / "x").ToUtf8();
        const std::string folder = name.substr(0, name.size() - 1);
        for (std::size_t at = 0; (at = text.find(folder, at)) != text.npos;) {
            text.replace(at, folder.size(), "@");
        }
        for (std::size_t at = 0; (at = text.find("  ", at)) != text.npos;) {
            text.erase(at, 1);
        }
        return text;
    }
    std::string takeOutput() { return take(m_console.output); }
    std::string takeErrors() { return take(m_console.error); }

    TemporaryFolder m_folder;
    SessionConsole m_console;
    tamesh::Settings m_settings;
};

/// With a session.
class SessionFixture : public SessionFolder
{
protected:
    tamesh::EExitCode say(const std::string& line)
    {
        tamesh::EExitCode code = tamesh::eEC_Done;
        for (const tamesh::SCommand& command : tamesh::ParseCommandLine(expand(line))) {
            code = m_session.Execute(command);
        }
        return code;
    }
    /// What a line says that must succeed without a word about errors.
    std::string answer(const std::string& line)
    {
        EXPECT_EQ(say(line), tamesh::eEC_Done) << line;
        EXPECT_EQ(takeErrors(), "") << line;
        return takeOutput();
    }
    /// What a line complains of that must fail without results.
    std::string complaint(const std::string& line)
    {
        EXPECT_EQ(say(line), tamesh::eEC_Failed) << line;
        EXPECT_EQ(takeOutput(), "") << line;
        return takeErrors();
    }

    TaDataManager& manager() { return m_session.GetTree().GetManager(); }
    TuSmartPointer<TaNode> node(const std::string& mesh)
    {
        return m_session.GetTree().GetMesh(mesh);
    }
    template <class Value>
    TuSmartPointer<const Value> find(
        const std::string& mesh, const CString& part, const CString& name = u"Data")
    {
        return tamesh::FindValue<Value>(*node(mesh), part, name);
    }
    std::vector<const TaNode*> getParts(const std::string& mesh)
    {
        std::vector<const TaNode*> parts;
        const TuSmartPointer<const TaNode> top = node(mesh);
        for (auto part = top->GetChildren(); part; ++part) {
            parts.push_back(&*part);
        }
        return parts;
    }
    std::string dump() { return manager().ToString().ToUtf8(); }
    /// Nobody holds a lock, or asks for one, and no part is there twice.
    void expectConsistent()
    {
        EXPECT_EQ(TaDataTreeProbe::FindFault(manager()), "");
        EXPECT_EQ(dump().find("thread "), std::string::npos) << dump();
        for (const std::string& mesh : m_session.GetTree().GetNames()) {
            std::set<std::string> names;
            for (const TaNode* part : getParts(mesh)) {
                EXPECT_TRUE(names.insert(part->GetName().ToUtf8()).second)
                    << mesh << ": " << part->GetName().ToUtf8();
            }
        }
    }
    /// Waits until a command asks for locks in vain.
    ::testing::AssertionResult isAsking(const std::string& request)
    {
        const std::uint64_t deadline = platform::GetDeadline(60'000);
        while (platform::GetMillisecondsUntil(deadline) != 0) {
            if (dump().find(request) != std::string::npos) {
                return ::testing::AssertionSuccess();
            }
            std::this_thread::yield();
        }
        return ::testing::AssertionFailure() << "nobody " << request << ":\n" << dump();
    }

    tamesh::Session m_session{ m_console, m_settings };
};
