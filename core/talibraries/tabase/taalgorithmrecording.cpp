#include "tabase/taalgorithmrecording.h"

#include "groundwork/tuloglistenermanager.h"
#include "platform/platformfile.h"
#include "tabase/cexception.h"
#include "tabase/taalgorithm.h"
#include "tabase/tafilesystem.h"
#include "tabase/tastreamwritebinaryfile.h"
#include "tabase/tauniqueid.h"

#include <string_view>

TaAlgorithmRecording::TaAlgorithmRecording() = default;
TaAlgorithmRecording::~TaAlgorithmRecording() = default;

CString TaAlgorithmRecording::MakeFileName(const CString& id)
{
    constexpr std::u16string_view kExtension = u".dat";
    constexpr std::size_t kProcessorLength = 4;
    const std::u16string_view name = id;
    if (!name.ends_with(u".x86") && !name.ends_with(u".x64")) {
        return id + kExtension;
    }
    return id.Left(name.size() - kProcessorLength) + kExtension
        + name.substr(name.size() - kProcessorLength);
}

void TaAlgorithmRecording::Begin(const TaAlgorithm& algorithm, const CString& id) noexcept
{
    guard([&] {
        const CString path = algorithm.GetUnitTestDirectory()
            + MakeFileName(id.IsEmpty() ? TaUniqueID::GetUniqueID() : id);
        m_path = TaFileSystem::GetSystemPath(path);
        m_stream = std::make_unique<TaStreamWriteBinaryFile>(m_path);
        algorithm.SerializeUnitTestInput(*m_stream);
    });
}

void TaAlgorithmRecording::End(const TaAlgorithm& algorithm) noexcept
{
    if (m_stream != nullptr) {
        guard([&] {
            algorithm.SerializeUnitTestOutput(*m_stream);
            m_stream->Close();
            m_stream.reset();
        });
    }
}

void TaAlgorithmRecording::Remove() noexcept
{
    if (m_stream != nullptr) {
        m_stream.reset();
        try {
            platform::RemovePath(m_path);
        } catch (const std::exception&) {
            return; // no memory: it stays
        }
    }
}

template <class Write> void TaAlgorithmRecording::guard(Write&& write) noexcept
{
    try {
        write();
    } catch (const std::exception& failure) {
        drop(failure.what());
    } catch (CException* failure) {
        delete failure;
        drop("an exception of the framework");
    } catch (...) {
        drop("an exception of an unknown kind");
    }
}

/// Half a recording would be taken for one whose run failed: it goes.
void TaAlgorithmRecording::drop(const char* reason)
{
    Remove();
    try {
        TuLogListenerManager::GetInstance().NotifyListeners(eLL_Warning, TU_HERE,
            u"the run of an algorithm is not recorded: " + CString::FromUtf8(reason));
    } catch (const std::exception&) {
        return; // nor is there memory to say so
    }
}
