// The one way out of the page: messages to the native handler "editorBridge". Through Qt's web
// channel when the page runs in Pagewell, else to a test hook. Messages posted before the channel
// is up wait in a queue, in order.

export function createBridge(win = window) {
  const queue = [];
  let send = null;

  function flush() {
    while (send && queue.length) send(queue.shift());
  }

  function connectWebChannel() {
    const start = () => {
      // eslint-disable-next-line no-undef
      new win.QWebChannel(win.qt.webChannelTransport, (channel) => {
        const handler = channel.objects.editorBridge;
        if (!handler) return;
        send = (message) => handler.postMessage(message);
        flush();
      });
    };
    if (win.QWebChannel) {
      start();
      return;
    }
    const script = win.document.createElement("script");
    script.src = "qrc:///qtwebchannel/qwebchannel.js";
    script.onload = start;
    win.document.head.appendChild(script);
  }

  if (win.qt && win.qt.webChannelTransport) {
    connectWebChannel();
  } else {
    send = (message) => {
      if (win.__pagewellTest && typeof win.__pagewellTest.post === "function") {
        win.__pagewellTest.post(message);
      }
    };
  }

  return {
    post(message) {
      queue.push(message);
      flush();
    },
  };
}
