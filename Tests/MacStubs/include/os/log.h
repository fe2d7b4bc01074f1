// What this project uses of the unified log, declared so that it compiles where the header is not. The compiler's own
// builtin checks the format and its arguments, as it does on a Mac.
#pragma once

#include <os/object.h>
#include <stdbool.h>
#include <stdint.h>

OS_OBJECT_DECL(os_log);

typedef uint8_t os_log_type_t;
enum : os_log_type_t { OS_LOG_TYPE_DEFAULT = 0x00, OS_LOG_TYPE_INFO = 0x01, OS_LOG_TYPE_DEBUG = 0x02 };

extern "C" {
extern void* __dso_handle;

os_log_t os_log_create(const char* subsystem, const char* category);
bool os_log_type_enabled(os_log_t log, os_log_type_t type);
void _os_log_impl(void* dso, os_log_t log, os_log_type_t type, const char* format, uint8_t* buffer, uint32_t size);
}

#define os_log_with_type(log, type, format, ...)                                                                       \
    __extension__({                                                                                                    \
        os_log_t log_ = (log);                                                                                         \
        if (os_log_type_enabled(log_, type)) {                                                                         \
            static const char format_[] = format;                                                                      \
            uint8_t buffer_[__builtin_os_log_format_buffer_size(format, ##__VA_ARGS__)];                               \
            _os_log_impl(&__dso_handle, log_, type, format_,                                                           \
                         static_cast<uint8_t*>(__builtin_os_log_format(buffer_, format, ##__VA_ARGS__)),               \
                         static_cast<uint32_t>(sizeof(buffer_)));                                                      \
        }                                                                                                              \
    })

#define os_log_debug(log, format, ...) os_log_with_type(log, OS_LOG_TYPE_DEBUG, format, ##__VA_ARGS__)
