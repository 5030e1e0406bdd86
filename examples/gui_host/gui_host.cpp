// A desktop window that runs scripts. The script runs on a worker thread and reports through
// a "Ui" host object; the window stays responsive, shows the script's progress and the line it
// is on, and its Stop button ends the run. MsgBox and InputBox open the engine's own windows.
//
// With --auto the window runs its sample script by itself, presses Stop once the script has
// made some progress, prints how the run ended and quits (the tests run it that way).
#include <FL/Fl.H>
#include <FL/Fl_Box.H>
#include <FL/Fl_Button.H>
#include <FL/Fl_Double_Window.H>
#include <FL/Fl_Progress.H>
#include <FL/Fl_Text_Buffer.H>
#include <FL/Fl_Text_Editor.H>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <memory>
#include <string>
#include <thread>

#include "lxbasic/bridge.h"
#include "lxbasic/exceptions.h"
#include "lxbasic/script.h"
#include "lxbasic/text.h"

namespace {

const char* const kSample =
    "DIM RESULT = 0\n"
    "Status(\"Counting...\")\n"
    "FOR i = 1 TO 100\n"
    "  Progress(i)\n"
    "  Pause(30)\n"
    "  RESULT = i\n"
    "NEXT\n"
    "MsgBox(\"Counted to \" & RESULT)\n";

// What the worker thread asks the window to show. Widgets belong to the UI thread, so host
// methods never touch them: they post one of these through Fl::awake.
struct UiUpdate {
  std::string status;
  double progress = -1;  // percent; below 0 leaves the bar as it is
  bool finished = false;
};

class App;
App* theApp = nullptr;

void post(UiUpdate update);

// The host object scripts talk to. It runs on the script's thread.
class Ui : public lx::Object {
 public:
  void status(const std::string& text) { post({text}); }
  void progress(double percent) { post({"", percent}); }
  void pause(uint32_t milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
  }
};

class App {
 public:
  explicit App(bool automatic) : automatic_(automatic) {
    window_ = new Fl_Double_Window(520, 360, "LxBasic");
    editor_ = new Fl_Text_Editor(10, 10, 500, 220);
    editor_->buffer(&source_);
    source_.text(kSample);
    progress_ = new Fl_Progress(10, 240, 500, 20);
    progress_->maximum(100);
    status_ = new Fl_Box(10, 265, 500, 25, "Ready");
    line_ = new Fl_Box(10, 290, 500, 20);
    runButton_ = new Fl_Button(10, 320, 100, 30, "Run");
    stopButton_ = new Fl_Button(120, 320, 100, 30, "Stop");
    runButton_->callback([](Fl_Widget*, void* app) { static_cast<App*>(app)->start(); }, this);
    stopButton_->callback([](Fl_Widget*, void* app) { static_cast<App*>(app)->stop(); }, this);
    stopButton_->deactivate();
    window_->end();

    // The hook runs on the script's thread: it only records the line; a timer shows it.
    script_.setLineHook([this](int32_t line, int32_t) {
      currentLine_.store(line, std::memory_order_relaxed);
      return true;
    });
    script_.addObj(std::make_shared<Ui>());
    script_.setTimeout(60);
  }

  ~App() {
    // Closing the window during a run stops the script before its objects go away.
    script_.terminate();
    if (worker_.joinable()) worker_.join();
    delete window_;
  }

  void show(int argc, char** argv) {
    window_->show(argc, argv);
    Fl::add_timeout(0.1, showLine, this);
    if (automatic_) start();
  }

  void start() {
    if (worker_.joinable()) return;
    // The buffer hands out a copy of its text that the caller frees.
    std::unique_ptr<char, decltype(&std::free)> text(source_.text(), &std::free);
    script_.setScript(std::string_view(text.get()));
    runButton_->deactivate();
    stopButton_->activate();
    progress_->value(0);
    worker_ = std::thread([this] {
      std::string outcome;
      try {
        lx::Variant result = script_.run();
        outcome = describeOutcome(result);
      } catch (...) {
        outcome = "Failed: " + lx::describeException(std::current_exception());
      }
      post({outcome, -1, true});
    });
  }

  void stop() { script_.terminate(); }

  void apply(const UiUpdate& update) {
    if (update.progress >= 0) {
      progress_->value(static_cast<float>(update.progress));
      if (automatic_ && update.progress >= 10) stop();
    }
    if (!update.status.empty()) status_->copy_label(update.status.c_str());
    if (update.finished) {
      worker_.join();
      runButton_->activate();
      stopButton_->deactivate();
      if (automatic_) {
        std::printf("%s\n", update.status.c_str());
        window_->hide();
      }
    }
  }

 private:
  std::string describeOutcome(const lx::Variant& result) const {
    if (std::exception_ptr thrown = script_.lastException()) {
      return "Failed: " + lx::describeException(thrown);
    }
    if (script_.failed()) return "Failed: " + lx::toUtf8(script_.error()->description());
    if (script_.error()) return "Stopped";  // terminate or EXIT: a signal, not a failure
    return "Finished: RESULT = " + lx::toUtf8(lx::toText(result));
  }

  static void showLine(void* p) {
    auto* app = static_cast<App*>(p);
    const std::string text = "Line " + std::to_string(app->currentLine_.load());
    app->line_->copy_label(text.c_str());
    Fl::repeat_timeout(0.1, showLine, p);
  }

  bool automatic_;
  Fl_Double_Window* window_;
  Fl_Text_Buffer source_;
  Fl_Text_Editor* editor_;
  Fl_Progress* progress_;
  Fl_Box* status_;
  Fl_Box* line_;
  Fl_Button* runButton_;
  Fl_Button* stopButton_;
  lx::LxBasicScript script_;
  std::thread worker_;
  std::atomic<int32_t> currentLine_{0};
};

void applyUpdate(void* p) {
  std::unique_ptr<UiUpdate> update(static_cast<UiUpdate*>(p));
  if (theApp) theApp->apply(*update);
}

void post(UiUpdate update) {
  Fl::awake(applyUpdate, new UiUpdate(std::move(update)));
}

}  // namespace

int main(int argc, char** argv) {
  lx::ClassBuilder<Ui>("Ui")
      .method("Status:", &Ui::status)
      .method("Progress:", &Ui::progress)
      .method("Pause:", &Ui::pause);

  bool automatic = false;
  if (argc > 1 && std::strcmp(argv[1], "--auto") == 0) {
    automatic = true;
    --argc;
    ++argv;
  }
  Fl::lock();  // lets other threads wake the UI thread with Fl::awake
  App app(automatic);
  theApp = &app;
  app.show(argc, argv);
  const int status = Fl::run();
  theApp = nullptr;
  return status;
}
