#include "subclass_chain.h"

#include <QDebug>
#include <QEvent>
#include <QThread>
#include <map>
#include <memory>
#include <set>
#include <vector>

#include "tsruntime/WindowMessages.h"
#include "window_properties.h"

namespace tsruntime::subclass_detail {
namespace {

thread_local int32_t current_message = 0;
thread_local int dispatch_depth = 0;

// Late-bound clients held while attached, by window, with the number of their attachments.
struct Held {
  Ref<Object> client;
  int attachments = 0;
};
thread_local std::map<int32_t, std::map<Object*, Held>> held_clients;

// Lets go of every late-bound client still attached to a destroyed window.
void ReleaseWindow(int32_t hwnd) {
  auto found = held_clients.find(hwnd);
  if (found == held_clients.end()) return;
  const std::map<Object*, Held> released = std::move(found->second);  // released last
  held_clients.erase(found);
}

// Whether each widget tracked the mouse before a client listened to moves.
thread_local std::map<const QObject*, bool> tracking_before;

// A counted reference for the time of one call; an object that nobody counts (a C++
// client the host keeps on its stack) is used as it is.
class ClientRef {
 public:
  explicit ClientRef(Object* o) : o_(o), counted_(o->RefCount() > 0) {
    if (counted_) o_->AddRef();
  }
  ~ClientRef() {
    if (counted_) o_->Release();
  }
  ClientRef(const ClientRef&) = delete;
  ClientRef& operator=(const ClientRef&) = delete;
  Object& operator*() const { return *o_; }

 private:
  Object* o_;
  bool counted_;
};

EMsgResponse ResponseOf(Object& client) {
  if (auto* native = dynamic_cast<ISubclass*>(&client)) return native->MsgResponse();
  std::vector<Argument> none;
  try {
    return static_cast<EMsgResponse>(ToLong(Invoke(client, u"MsgResponse", InvokeKind::kCall, none)));
  } catch (const Error&) {  // a late-bound client without one consumes, as the default says
    return emrConsume;
  }
}

int32_t WindowProcOf(Object& client, int32_t hwnd, const Message& m) {
  if (auto* native = dynamic_cast<ISubclass*>(&client)) {
    return native->WindowProc(hwnd, m.msg, m.wParam, m.lParam);
  }
  std::vector<Argument> args{{{}, Variant(hwnd)}, {{}, Variant(m.msg)},
                             {{}, Variant(m.wParam)}, {{}, Variant(m.lParam)}};
  const Variant result = Invoke(client, u"WindowProc", InvokeKind::kCall, args);
  return result.isEmpty() ? 0 : ToLong(result);
}

// Undoing the subclassing on the destroy notice that no client takes.
void UnhookOnDestroy(QWidget& widget, WindowProperties& props) {
  if (props.Attachments() <= 0) return;
  if (props.PreviousProcedure() != 0) Unhook(widget);
  props.SetPreviousProcedure(0);
  props.SetAttachments(0);
}

// The window procedure: an event filter in front of each hooked widget of the thread.
class ChainFilter : public QObject {
 public:
  static ChainFilter& ForThisThread() {
    thread_local ChainFilter filter;
    return filter;
  }

  void Watch(QWidget& widget, int32_t hwnd) {
    auto [entry, first] = watched_.try_emplace(&widget);
    entry->second.insert(hwnd);
    if (!first) return;
    connect(&widget, &QObject::destroyed, this, [this](QObject* gone) {
      const std::set<int32_t> hwnds = std::move(watched_[gone]);
      watched_.erase(gone);
      tracking_before.erase(gone);
      // Qt announces the deletion before the native window goes, and the destroy notice
      // still reaches the clients after this: let go of them once that is done.
      QMetaObject::invokeMethod(
          this, [hwnds] { for (int32_t h : hwnds) ReleaseWindow(h); }, Qt::QueuedConnection);
    });
  }

 protected:
  bool eventFilter(QObject* target, QEvent* event) override {
    if (!target->isWidgetType()) return false;
    auto& widget = static_cast<QWidget&>(*target);
    // Most events are no message at all: decided before any property is read.
    const std::vector<Message> messages = MessagesFor(widget, *event);
    if (messages.empty()) return false;
    const int32_t hwnd = static_cast<int32_t>(widget.internalWinId());
    if (hwnd == 0 || WindowProperties(widget, hwnd).PreviousProcedure() == 0) return false;
    PreviousProcedure previous(widget, event);
    // A client's failure cannot travel through the event loop.
    try {
      for (const Message& m : messages) Dispatch(widget, hwnd, m, previous);
    } catch (const std::exception& e) {
      qWarning("tsruntime: a window procedure failed: %s", e.what());
    }
    if (messages.front().msg == wm::kDestroy) {
      // The window goes whatever its clients answered: the widget must learn that it has
      // lost its native window (a top-level closed and shown again gets a new one).
      ReleaseWindow(hwnd);
      return previous.delivered();
    }
    // A close the chain kept from the widget must not close it either.
    if (!previous.delivered() && event->type() == QEvent::Close) event->ignore();
    return true;  // the chain ran the widget's own handling, or chose not to
  }

 private:
  std::map<QObject*, std::set<int32_t>> watched_;  // with the handles hooked on each
};

}  // namespace

int32_t PreviousProcedure::Call(const Message& m) {
  if (!widget_) return 0;
  if (!event_) return DefaultProcedure(*widget_, m.msg, m.wParam, m.lParam);
  if (!event_delivered_) {
    event_delivered_ = true;
    static_cast<QObject*>(widget_.data())->event(event_);
  }
  return 0;
}

int32_t DefaultProcedure(QWidget& widget, int32_t msg, int32_t, int32_t) {
  if (msg == wm::kClose) {
    widget.hide();
    if (widget.testAttribute(Qt::WA_DeleteOnClose)) widget.deleteLater();
  }
  return 0;
}

quintptr DefaultProcedureAddress() { return reinterpret_cast<quintptr>(&DefaultProcedure); }

quintptr Hook(QWidget& widget) {
  if (widget.thread() != QThread::currentThread()) return 0;
  ChainFilter& filter = ChainFilter::ForThisThread();
  widget.installEventFilter(&filter);
  filter.Watch(widget, static_cast<int32_t>(widget.internalWinId()));
  return DefaultProcedureAddress();
}

void Unhook(QWidget& widget) { widget.removeEventFilter(&ChainFilter::ForThisThread()); }

int32_t Dispatch(QWidget& widget, int32_t hwnd, const Message& m, PreviousProcedure& previous) {
  WindowProperties props(widget, hwnd);
  if (props.PreviousProcedure() == 0) return 0;
  const int32_t n = props.Clients(m.msg);
  bool previous_called = false;
  auto call_previous = [&] {
    previous_called = true;
    return previous.Call(m);
  };
  if (n < 1) {
    if (m.msg == wm::kDestroy) UnhookOnDestroy(widget, props);
    return call_previous();
  }
  ++dispatch_depth;
  struct Leave {
    ~Leave() { --dispatch_depth; }
  } leave;
  int32_t result = 0;
  std::unique_ptr<ClientRef> last_visited;
  // Latest attached first; position 1, the earliest, alone decides on the previous
  // procedure. Positions are read as they are reached: a client may detach others.
  for (int32_t position = n; position >= 1; --position) {
    const quintptr address = props.Client(m.msg, position);
    if (address == 0) continue;
    ClientRef client(reinterpret_cast<Object*>(address));
    current_message = m.msg;
    if (position == 1 && ResponseOf(*client) == emrPreprocess && !previous_called) {
      call_previous();
    }
    result = WindowProcOf(*client, hwnd, m);
    last_visited = std::make_unique<ClientRef>(reinterpret_cast<Object*>(address));
  }
  if (last_visited && ResponseOf(**last_visited) == emrPostProcess && !previous_called) {
    result = call_previous();
  }
  return result;
}

void DeleteWidget(QWidget& widget) {
  if (dispatch_depth > 0) {
    widget.deleteLater();
  } else {
    delete &widget;
  }
}

int32_t& CurrentMessage() { return current_message; }

void HoldIfLateBound(int32_t hwnd, Object* client) {
  if (!client || dynamic_cast<ISubclass*>(client)) return;
  Held& held = held_clients[hwnd][client];
  if (!held.client) held.client = Ref<Object>(client);
  ++held.attachments;
}

void ReleaseIfHeld(int32_t hwnd, Object* client) {
  auto window = held_clients.find(hwnd);
  if (window == held_clients.end()) return;
  auto found = window->second.find(client);
  if (found == window->second.end() || --found->second.attachments > 0) return;
  Ref<Object> last = std::move(found->second.client);  // released after the entry is gone
  window->second.erase(found);
  if (window->second.empty()) held_clients.erase(window);
}

void TrackMouseForClients(QWidget& widget, bool listening) {
  if (listening) {
    if (tracking_before.try_emplace(&widget, widget.hasMouseTracking()).second)
      widget.setMouseTracking(true);
    return;
  }
  auto found = tracking_before.find(&widget);
  if (found == tracking_before.end()) return;
  widget.setMouseTracking(found->second);
  tracking_before.erase(found);
}

}  // namespace tsruntime::subclass_detail
