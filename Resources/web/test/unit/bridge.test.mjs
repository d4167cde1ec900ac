import { test } from "node:test";
import assert from "node:assert/strict";
import { createBridge } from "../../src/bridge.js";

test("messages wait for the web channel, then go in order", () => {
  const received = [];
  let ready = null;
  const win = {
    qt: { webChannelTransport: {} },
    QWebChannel: function (transport, callback) {
      ready = () => callback({ objects: { editorBridge: { postMessage: (m) => received.push(m) } } });
    },
  };
  const bridge = createBridge(win);
  bridge.post({ type: "headingsUpdated", headings: [] });
  bridge.post({ type: "contentChanged", markdown: "a" });
  assert.deepEqual(received, []);
  ready();
  bridge.post({ type: "saveRequested" });
  assert.deepEqual(
    received.map((m) => m.type),
    ["headingsUpdated", "contentChanged", "saveRequested"],
  );
});
