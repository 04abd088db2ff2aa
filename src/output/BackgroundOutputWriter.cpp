#include "output/BackgroundOutputWriter.h"

#include <QMetaObject>

namespace marigold {

BackgroundOutputWriter::BackgroundOutputWriter(QObject* parent)
    : QObject(parent), _thread([this] { _run(); }) {}

BackgroundOutputWriter::~BackgroundOutputWriter() {
    {
        std::lock_guard guard(_lock);
        _stopping = true;
        _pending.reset();
    }
    _changed.notify_all();
    _thread.join();
}

void BackgroundOutputWriter::start(Job job) {
    {
        std::lock_guard guard(_lock);
        _pending = std::move(job);
    }
    _changed.notify_all();
}

bool BackgroundOutputWriter::isWriting(quint64 generation) const {
    std::lock_guard guard(_lock);
    return (_pending && _pending->generation == generation) || _running == generation;
}

std::optional<WrittenFile> BackgroundOutputWriter::waitFor(quint64 generation) {
    std::unique_lock guard(_lock);
    _changed.wait(guard, [&] {
        return !((_pending && _pending->generation == generation) || _running == generation);
    });
    if (!_done || _done->second != generation) return std::nullopt;
    WrittenFile file = std::move(_done->first);
    _done.reset();
    return file;
}

void BackgroundOutputWriter::waitUntilIdle() {
    std::unique_lock guard(_lock);
    _pending.reset();
    _changed.wait(guard, [this] { return !_running; });
}

void BackgroundOutputWriter::_run() {
    std::unique_lock guard(_lock);
    for (;;) {
        _changed.wait(guard, [this] { return _stopping || _pending; });
        if (_stopping) return;
        Job job = std::move(*_pending);
        _pending.reset();
        _running = job.generation;
        guard.unlock();
        WrittenFile file;
        try {
            file = writeOutputAt(job.render(), job.path, job.settings);
        } catch (const std::exception&) {
            // A failed render or encode is a file not written, as on the window's own thread.
            removeOutputFile(job.path);
        }
        guard.lock();
        _running.reset();
        // Two jobs done before the window took the first: the older one is stale already.
        if (_done) removeOutputFile(_done->first.path);
        _done.emplace(std::move(file), job.generation);
        _changed.notify_all();
        QMetaObject::invokeMethod(
            this, [this] { _deliver(); }, Qt::QueuedConnection);
    }
}

void BackgroundOutputWriter::_deliver() {
    std::optional<std::pair<WrittenFile, quint64>> done;
    {
        std::lock_guard guard(_lock);
        done.swap(_done);
    }
    if (done) Q_EMIT finished(done->first, done->second);
}

}  // namespace marigold
