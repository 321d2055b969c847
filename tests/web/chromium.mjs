// Debian's Chromium, driven by puppeteer. KORVANE_WEB_PACKAGES names the folder of the packages of tests/web/package.json.

import fs from "node:fs";
import { createRequire } from "node:module";
import os from "node:os";
import path from "node:path";

const require = createRequire(path.join(path.resolve(process.env.KORVANE_WEB_PACKAGES), "package.json"));

export const packageOfTests = (name) => require(name);
export const placeOfPackage = (file) => require.resolve(file);

// The profiles of browsers, which still write into them for a moment when they have been closed.
const profiles = [];
process.on("exit", () => {
  for (const profile of profiles) {
    try {
      fs.rmSync(profile, { recursive: true, force: true, maxRetries: 5 });
    } catch {
      // A folder for temporary files loses it some day.
    }
  }
});

// A browser with a profile of its own, with these flags, and without those of the library's own.
export async function openBrowser(flags = [], without = []) {
  const profile = fs.mkdtempSync(path.join(os.tmpdir(), "korvane-web-"));
  profiles.push(profile);
  return packageOfTests("puppeteer-core").launch({
    executablePath: "/usr/bin/chromium", headless: true, userDataDir: profile, pipe: true, ignoreDefaultArgs: without,
    args: ["--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage", ...flags],
  });
}
