#include "support/temporaryfolder.h"

#include <fstream>
#include <random>
#include <sstream>
#include <stdexcept>
#include <system_error>

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

std::string TemporaryFolder::ReadAll(std::string_view name) const
{
    std::ifstream file(GetPath(name), std::ios::binary);
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

void TemporaryFolder::WriteAll(std::string_view name, std::string_view content) const
{
    std::ofstream(GetPath(name), std::ios::binary) << content;
}
