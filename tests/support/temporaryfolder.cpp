#include "support/temporaryfolder.h"

#include <fstream>
#include <iterator>
#include <random>
#include <stdexcept>
#include <system_error>

std::string ReadFile(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

TemporaryFolder::TemporaryFolder()
{
    // The name needs to differ from that of every test that runs at the same time.
    std::random_device device;
    const std::string name = "tabase-test-" + std::to_string(device()) + std::to_string(device());
    m_folder = std::filesystem::temp_directory_path() / name;
    if (!std::filesystem::create_directory(m_folder)) {
        throw std::runtime_error("cannot make the folder " + m_folder.string());
    }
}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(m_folder, ignored);
}

void TemporaryFolder::WriteAll(std::string_view name, std::string_view content) const
{
    std::ofstream(GetPath(name), std::ios::binary) << content;
}

std::ptrdiff_t TemporaryFolder::CountFiles() const
{
    return std::distance(std::filesystem::directory_iterator(m_folder), {});
}
