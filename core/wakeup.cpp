// SPDX-License-Identifier: GPL-3.0-or-later
// The wake-up call over an eventfd: a counter the kernel keeps, readable
// while it is above zero; a read takes it back to zero.
#include "core/wakeup.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <system_error>

namespace lw::core {

Wakeup::Wakeup() : m_fd(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (m_fd < 0) {
        throw std::system_error(errno, std::generic_category(), "eventfd");
    }
}

Wakeup::~Wakeup() {
    close(m_fd);
}

void Wakeup::Notify() {
    const std::uint64_t one = 1;
    // Only fails when the counter is full, and then a call is pending anyway.
    [[maybe_unused]] const ssize_t written = write(m_fd, &one, sizeof one);
}

void Wakeup::Wait() {
    pollfd watch{m_fd, POLLIN, 0};
    while (poll(&watch, 1, -1) < 0 && errno == EINTR) {
    }
    Clear();
}

void Wakeup::Clear() {
    std::uint64_t count = 0;
    [[maybe_unused]] const ssize_t read = ::read(m_fd, &count, sizeof count);
}

}  // namespace lw::core
