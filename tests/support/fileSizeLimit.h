// While it lives, every write beyond that file length fails, as on a full disk.
#pragma once

#include <sys/resource.h>

#include <csignal>
#include <cstddef>

class FileSizeLimit {
public:
    explicit FileSizeLimit(std::size_t bytes) {
        m_handler = std::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit{bytes, m_before.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() {
        ::setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit m_before{};
    void (*m_handler)(int) = nullptr;
};
