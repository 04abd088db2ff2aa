#pragma once

#include <QObject>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>

#include "output/TmpFileWriter.h"

namespace marigold {

// Renders and writes output files on a thread of its own, one at a time, so that the size of
// the file a save would write can be shown while the person edits without the window ever
// waiting for an encoder. A newer job replaces one that has not started; a job already
// running finishes, and the generation it carries lets the receiver tell it is stale.
class BackgroundOutputWriter : public QObject {
    Q_OBJECT

public:
    struct Job {
        quint64 generation = 0;
        // Makes the full-resolution output; runs on the writer's thread, so it must own
        // everything it reads.
        std::function<Image()> render;
        QString path;
        OutputSettings settings;
    };

    explicit BackgroundOutputWriter(QObject* parent = nullptr);
    // Waits for a running job: its file is in the temporary folder, which goes at quit.
    ~BackgroundOutputWriter() override;

    void start(Job job);
    // Whether a job of this generation is waiting or running.
    bool isWriting(quint64 generation) const;
    // Blocks until the job of `generation` is done and returns its file; nothing when there
    // is no such job. A file taken here is not signalled.
    std::optional<WrittenFile> waitFor(quint64 generation);
    // Drops the waiting job and waits for the running one (before the folder is removed).
    void waitUntilIdle();

Q_SIGNALS:
    // On the thread the writer lives in, for each finished job not taken by `waitFor`.
    void finished(const WrittenFile& file, quint64 generation);

private:
    void _run();
    void _deliver();

    mutable std::mutex _lock;
    std::condition_variable _changed;
    std::optional<Job> _pending;
    std::optional<quint64> _running;
    std::optional<std::pair<WrittenFile, quint64>> _done;
    bool _stopping = false;
    std::thread _thread;
};

}  // namespace marigold
