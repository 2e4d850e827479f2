// Whether a sanitizer watches: it brings an allocator of its own and needs larger stacks.
#pragma once

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define QUOR_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define QUOR_SANITIZED 1
#endif
#endif
