#pragma once

#include <cstddef>
#include <functional>
#include <pthread.h>
#include <stdexcept>

/// Runs @p action on a thread whose stack has @p size octets.
inline void onStackOf(std::size_t size, const std::function<void()>& action) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, size);
    pthread_t thread;
    const int problem = pthread_create(
        &thread, &attributes,
        [](void* argument) -> void* {
            (*static_cast<const std::function<void()>*>(argument))();
            return nullptr;
        },
        const_cast<std::function<void()>*>(&action));
    pthread_attr_destroy(&attributes);
    if (problem != 0) {
        throw std::runtime_error("no thread");
    }
    pthread_join(thread, nullptr);
}
