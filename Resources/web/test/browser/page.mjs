// Opens the built editor page in Debian's Chromium with a fake bridge that records every message.
import { chromium } from "playwright-core";
import { pathToFileURL } from "node:url";
import { resolve } from "node:path";

export const pageDir = resolve(process.env.PAGEWELL_WEB_DIR || new URL("../../dist", import.meta.url).pathname);

export async function launch() {
  return chromium.launch({
    executablePath: process.env.CHROMIUM || "/usr/bin/chromium",
    args: [
      "--no-sandbox",
      "--disable-gpu",
      "--disable-background-networking",
      "--disable-component-update",
      "--disable-sync",
      "--no-first-run",
    ],
  });
}

// A page with the editor loaded. `errors` collects console errors and uncaught exceptions;
// `messages()` returns what the page posted to the bridge, oldest first. `slowdown` runs the
// page's scripts, once loaded, that many times slower, as on a busy machine.
export async function openEditor(browser, { width = 1000, height = 700, colorScheme = "light", slowdown = 1 } = {}) {
  const context = await browser.newContext({ viewport: { width, height }, colorScheme });
  const page = await context.newPage();
  const errors = [];
  page.on("console", (m) => {
    if (m.type() === "error") errors.push(m.text());
  });
  page.on("pageerror", (e) => errors.push(String(e)));
  await page.addInitScript(() => {
    window.__pagewellTest = { messages: [], post: (m) => window.__pagewellTest.messages.push(m) };
  });
  await page.goto(pathToFileURL(resolve(pageDir, "editor.html")).href);
  await page.waitForFunction(() => typeof window.Pagewell === "object");
  if (slowdown > 1) await (await context.newCDPSession(page)).send("Emulation.setCPUThrottlingRate", { rate: slowdown });
  return {
    page,
    errors,
    messages: () => page.evaluate(() => window.__pagewellTest.messages),
    clearMessages: () => page.evaluate(() => (window.__pagewellTest.messages = [])),
    text: () => page.evaluate(() => window.__pagewellEditor.view.state.sliceDoc()),
    close: () => context.close(),
  };
}

// Lets queued timers and the next frames run.
export function settle(page) {
  return page.evaluate(() => new Promise((done) => setTimeout(() => requestAnimationFrame(() => done()), 30)));
}
