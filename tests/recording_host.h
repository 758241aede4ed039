// Listeners that remember what they were told.
#pragma once

#include <deque>
#include <string>
#include <vector>

#include "session/host.h"

namespace skyvault::test {

struct Told {
    std::vector<std::wstring> information, errors, titles, progressTexts;
    std::vector<float> fractions;
    bool active = false;  ///< the progress box is shown
    /// Every call but SetProgress in its order: "ask", "information", "error", "begin", "reset", "end",
    /// "title", "checks", "show".
    std::vector<std::string> calls;
};

/// Remembers what an operation said.
template <typename Listener>
struct Recording : Listener, Told {
    void Information(const std::wstring& text) override {
        calls.push_back("information");
        information.push_back(text);
    }
    void BeginProgress() override {
        calls.push_back("begin");
        active = true;
    }
    void SetProgress(float fraction, std::wstring_view text) override {
        fractions.push_back(fraction);
        progressTexts.emplace_back(text);
    }
    void ResetProgress() override { calls.push_back("reset"); }
    void EndProgress() override {
        calls.push_back("end");
        active = false;
    }
    bool ProgressActive() const override { return active; }
};

using RecordingFeedback = Recording<Feedback>;

/// A host that answers dialogs from a queue, and shows nothing.
struct RecordingHost : Recording<Host> {
    struct Dialog {
        FileDialogKind kind;
        std::wstring startPath, title;
    };

    // What the test decides.
    std::deque<std::wstring> answers;  ///< for AskForFile, the first one first; cancelled when there is none
    StepSize modifierKeys = StepSize::Plain;
    ClientSize clientSize{320, 200};
    bool canShow = true;
    bool confirms = true;  ///< the answer to every question

    // What the program did.
    std::vector<Dialog> dialogs;
    std::vector<std::wstring> questions;
    std::vector<Image> shown;  ///< copies

    /// Begins anew: nothing is remembered, nothing will be answered.
    void Forget() {
        static_cast<Told&>(*this) = {};
        answers.clear();
        dialogs.clear();
        questions.clear();
        shown.clear();
    }

    void Error(const std::wstring& text) override {
        calls.push_back("error");
        errors.push_back(text);
    }
    ClientSize Size() const override { return clientSize; }
    bool Show(const Image& picture) override {
        calls.push_back("show");
        shown.push_back(picture.CopyRect());
        return true;
    }
    bool CanShow() const override { return canShow; }
    std::wstring AskForFile(FileDialogKind kind, const std::wstring& startPath, const std::wstring& title,
                            const AcceptPath& accept) override {
        calls.push_back("ask");
        dialogs.push_back({kind, startPath, title});
        std::wstring answer;
        do {
            answer = answers.empty() ? L"" : answers.front();
            if (!answers.empty()) answers.pop_front();
        } while (accept && !answer.empty() && !accept(answer));
        return answer;
    }
    bool Confirm(const std::wstring& question) override {
        questions.push_back(question);
        return confirms;
    }
    StepSize ModifierKeys() const override { return modifierKeys; }
    void SetTitle(const std::wstring& title) override {
        calls.push_back("title");
        titles.push_back(title);
    }
    void UpdateMenuChecks() override { calls.push_back("checks"); }
};

}  // namespace skyvault::test
