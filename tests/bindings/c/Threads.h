/* Threads in C, of the system. */
#pragma once

#include <stddef.h>

#ifdef _WIN32
#include <windows.h>
#else
#include <pthread.h>
#endif

struct c_thread {
    void (*work)(void*);
    void* data;
};

#ifdef _WIN32
static DWORD WINAPI c_thread_entry(LPVOID data) {
    ((struct c_thread*)data)->work(((struct c_thread*)data)->data);
    return 0;
}
#else
static void* c_thread_entry(void* data) {
    ((struct c_thread*)data)->work(((struct c_thread*)data)->data);
    return NULL;
}
#endif

/* Calls `work` in up to 8 threads at once, each with a row of `rows`, and waits for all. */
static void c_run_threads(void (*work)(void*), void* rows, size_t row_size, unsigned int count) {
    struct c_thread threads[8];
    unsigned int i;
#ifdef _WIN32
    HANDLE handles[8];
    for (i = 0; i < count; ++i) {
        threads[i].work = work;
        threads[i].data = (char*)rows + i * row_size;
        handles[i] = CreateThread(NULL, 0, c_thread_entry, &threads[i], 0, NULL);
    }
    WaitForMultipleObjects(count, handles, TRUE, INFINITE);
    for (i = 0; i < count; ++i) CloseHandle(handles[i]);
#else
    pthread_t handles[8];
    for (i = 0; i < count; ++i) {
        threads[i].work = work;
        threads[i].data = (char*)rows + i * row_size;
        pthread_create(&handles[i], NULL, c_thread_entry, &threads[i]);
    }
    for (i = 0; i < count; ++i) pthread_join(handles[i], NULL);
#endif
}
