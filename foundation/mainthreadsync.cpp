#include "foundation/mainthreadsync.h"

#include <utility>

XMainThreadSync& XMainThreadSync::Instance() {
    static XMainThreadSync sync;
    return sync;
}

void XMainThreadSync::SetWake(Wake wake) {
    std::lock_guard<std::mutex> hold(lock);
    wakeMainLoop = std::move(wake);
    messagePending = false;
}

void XMainThreadSync::Post(Task task) {
    std::list<Task> node;
    node.push_back(std::move(task));
    std::lock_guard<std::mutex> hold(lock);
    tasks.splice(tasks.end(), node);
    if (!messagePending && wakeMainLoop && wakeMainLoop()) messagePending = true;
}

void XMainThreadSync::RunPending() {
    {
        std::lock_guard<std::mutex> hold(lock);
        messagePending = false;
    }
    for (;;) {
        std::list<Task> first;
        {
            std::lock_guard<std::mutex> hold(lock);
            if (tasks.empty()) return;
            first.splice(first.end(), tasks, tasks.begin());
        }
        try {
            first.front()();
        } catch (...) {
            // A failing task must not keep the later ones from running.
        }
    }
}
