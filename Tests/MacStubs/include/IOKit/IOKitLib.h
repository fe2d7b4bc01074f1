// What this project uses of IOKit, declared so that it compiles where the framework is not.
#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <mach/mach.h>
#include <stddef.h>
#include <stdint.h>

typedef mach_port_t io_object_t;
typedef io_object_t io_connect_t;
typedef io_object_t io_iterator_t;
typedef io_object_t io_registry_entry_t;
typedef io_object_t io_service_t;
typedef char io_name_t[128];
typedef char io_string_t[512];
typedef kern_return_t IOReturn;
typedef uint32_t IOOptionBits;

extern "C" {
extern const mach_port_t kIOMainPortDefault __attribute__((availability(macos, introduced = 12.0)));

kern_return_t IOObjectRelease(io_object_t object);
io_object_t IOIteratorNext(io_iterator_t iterator);

CFMutableDictionaryRef IOServiceMatching(const char* className);
CFMutableDictionaryRef IOServiceNameMatching(const char* name);
io_service_t IOServiceGetMatchingService(mach_port_t mainPort, CFDictionaryRef matching);
kern_return_t IOServiceGetMatchingServices(mach_port_t mainPort, CFDictionaryRef matching, io_iterator_t* existing);
kern_return_t IOServiceOpen(io_service_t service, task_port_t owningTask, uint32_t type, io_connect_t* connection);
kern_return_t IOServiceClose(io_connect_t connection);
kern_return_t IOConnectCallStructMethod(mach_port_t connection, uint32_t selector, const void* input, size_t inputBytes,
                                        void* output, size_t* outputBytes);

#define kIOServicePlane "IOService"
kern_return_t IORegistryEntryGetChildIterator(io_registry_entry_t entry, const io_name_t plane,
                                              io_iterator_t* iterator);
kern_return_t IORegistryEntryGetRegistryEntryID(io_registry_entry_t entry, uint64_t* entryID);
io_registry_entry_t IORegistryEntryFromPath(mach_port_t mainPort, const io_string_t path);
CFTypeRef IORegistryEntryCreateCFProperty(io_registry_entry_t entry, CFStringRef key, CFAllocatorRef allocator,
                                          IOOptionBits options);
}
