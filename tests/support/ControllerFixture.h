#pragma once

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QTemporaryDir>

#include "core/AppController.h"
#include "output/OutputImageView.h"
#include "selection/InputImageView.h"
#include "support/TestImages.h"

namespace marigold {

inline void finishPass() {
    // Two rounds: a deferred call may defer once more.
    QCoreApplication::processEvents();
    QCoreApplication::processEvents();
}

class AppControllerTest : public ::testing::Test {
protected:
    AppControllerTest()
        : defaults(dir.filePath(QStringLiteral("settings.ini"))), controller(defaults) {
        input.resize(400, 300);
        output.resize(400, 300);
        controller.setViews(&input, &output);
        const auto recordAlert = [this](const QString& title, const QString& text) {
            alerts << title + QLatin1Char('|') + text;
        };
        controller.showAlert = recordAlert;
        output.showAlert = recordAlert;
        controller.askSizeLimitWarning = [this] {
            ++warningsShown;
            return answerDontShowAgain;
        };
    }

    // A 400 x 300 source, fully selected, with the history of the opening cleared.
    void openGradient() {
        input.setImage(test::gradientImage(400, 300));
        finishPass();
        controller.selectAll();
        finishPass();
        controller.undoManager().removeAllActions();
    }

    QTemporaryDir dir;
    Defaults defaults;
    AppController controller;
    InputImageView input;
    OutputImageView output;
    QStringList alerts;  // "title|text" of every alert shown
    int warningsShown = 0;
    bool answerDontShowAgain = false;
};

}  // namespace marigold
