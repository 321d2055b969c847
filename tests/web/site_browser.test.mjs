// The manual as a site, read and tried in a real browser. page_browser.mjs tells what is needed.
//
// KORVANE_WEB=build/web KORVANE_WEB_PACKAGES=build/web-tests node --test tests/web/site_browser.test.mjs

import assert from "node:assert";
import test from "node:test";
import { expectAccessible, expectReady, expectScreen, openBrowser, openPage, screenText, serve, takePicture } from "./page_browser.mjs";

let server, browser;
test.before(async () => {
  server = await serve();
  browser = await openBrowser();
});
test.after(async () => {
  await browser.close();
  await server.close();
});

function siteTest(name, place, body, options = {}) {
  test(name, async () => {
    const context = await browser.createBrowserContext();
    const page = await openPage(context, server.address + "manual/" + place, options);
    try {
      await body(page, context);
      assert.deepEqual(page.troubles, []);
    } catch (error) {
      await takePicture(page, `failed ${name}`.replace(/\W+/g, "-")).catch(() => {});
      throw error;
    } finally {
      await context.close();
    }
  });
}

// Clicks on the "Run" button of the first example that holds a text.
async function runExample(page, text) {
  const buttons = await page.$$(".run");
  for (const button of buttons) {
    if (!(await button.evaluate((element, wanted) => element.dataset.example.includes(wanted), JSON.stringify(text).slice(1, -1)))) continue;
    await button.evaluate((element) => element.scrollIntoView({ block: "center" }));
    await button.click();
    return;
  }
  assert.fail(`there is no example with ${text}`);
}

siteTest("the search finds a word where it is explained, and leads there by keys alone", "index.html", async (page) => {
  await page.keyboard.press("/");
  await page.keyboard.type("inkey");
  await page.waitForSelector("#found li a");
  await takePicture(page, "search");
  assert.equal(await page.$eval("#found li a", (link) => link.textContent.split(" ")[0]), "INKEY$");
  await page.keyboard.press("Enter");
  await page.waitForFunction(() => location.hash === "#inkey", { polling: 50 });
  assert.match(page.url(), /manual\/reference\/\w+\.html#inkey$/);
  await page.focus("#search");
  await page.keyboard.type("zzzqqq");
  await page.waitForFunction(() => /Nothing is found/.test(document.querySelector("#found p").textContent), { polling: 50 });
  await page.keyboard.press("Escape");
  assert.ok(await page.$eval("#found", (found) => found.hidden));
});

siteTest("an example runs in a machine beside the text, each time in a new one", "tour.html", async (page) => {
  await runExample(page, "squared is");
  await expectScreen(page, / 1 squared is 1\n 2 squared is 4\n 3 squared is 9\nReady\.$/);
  await takePicture(page, "example");
  assert.ok(await page.$eval("#player", (player) => player.getBoundingClientRect().left >= document.querySelector("main").getBoundingClientRect().right - 1),
    "beside the text, not on it");
  await page.keyboard.type("PRINT 6*7");
  await page.keyboard.press("Enter");
  await expectScreen(page, /^ 42$/m);
  await runExample(page, "PRIMT 5");
  await expectScreen(page, /^Expected =$/m);
  assert.doesNotMatch(await screenText(page), /squared/);
  await page.click("#player .bar button:last-of-type");
  assert.ok(await page.$eval("#player", (player) => player.hidden));
  assert.ok(await page.evaluate(() => document.activeElement.classList.contains("run")));
});

siteTest("examples get their files, their keys, and the Escape that ends them", "tour.html", async (page) => {
  await runExample(page, "10 GOTO 10");
  await expectScreen(page, /^Break in 10$/m);
  await runExample(page, 'LOAD "PHONE"');
  await expectScreen(page, /^Grace Hopper +555 1906$/m);
  await page.goto(server.address + "manual/reference/files.html");
  await runExample(page, 'OPEN "NAMES.TXT" FOR INPUT');
  await expectScreen(page, /^ADA\nGRACE$/m);
});

siteTest("the example programs run from their list", "examples.html", async (page) => {
  await page.click('button[aria-label="Run quicksort.bas"]');
  await expectScreen(page, /^RUN\nBefore:/m);
  assert.equal(await page.$$eval("button.run", (buttons) => buttons.length), 20);
});

for (const scheme of ["light", "dark"]) {
  siteTest(`the pages are ${scheme} and accessible, with a machine beside them too`, "reference/flow.html", async (page) => {
    await takePicture(page, `manual-${scheme}`);
    await expectAccessible(page);
    await runExample(page, "GOSUB 100");
    await expectReady(page);
    await expectAccessible(page);
    await takePicture(page, `manual-machine-${scheme}`);
    for (const other of ["index.html", "tour.html", "examples.html", "inside.html", "performance.html"]) {
      await page.goto(server.address + "manual/" + other);
      await expectAccessible(page);
    }
  }, { prepare: (page) => page.emulateMediaFeatures([{ name: "prefers-color-scheme", value: scheme }]) });
}

siteTest("on a phone the text fills the screen, and the machine the half of it", "tour.html", async (page) => {
  assert.equal(await page.evaluate(() => document.documentElement.scrollWidth - innerWidth), 0);
  await takePicture(page, "manual-phone");
  await runExample(page, "PRIMT 5");
  await expectScreen(page, /^Expected =$/m);
  await takePicture(page, "manual-phone-machine");
  await expectAccessible(page);
}, { width: 390, height: 844, deviceScaleFactor: 3, isMobile: true, hasTouch: true });

siteTest("after the first visit everything opens without a connection, in any folder", "index.html", async (page, context) => {
  await page.evaluate(() => navigator.serviceWorker.ready.then(() => {}));
  await page.waitForFunction(async () => {
    const [name] = await caches.keys();
    return name && (await (await caches.open(name)).keys()).length > 60;
  }, { polling: 100 });
  await server.close();
  try {
    for (const place of ["", "manual/tour.html", "manual/"]) {
      await page.goto(server.address + place);
      assert.notEqual(await page.title(), "");
    }
    const machine = await openPage(context, server.address);
    await expectReady(machine);
    await machine.keyboard.type("PRINT 6*7");
    await machine.keyboard.press("Enter");
    await expectScreen(machine, /^ 42$/m);
    await page.bringToFront();
    await page.goto(server.address + "manual/reference/flow.html");
    await runExample(page, "GOSUB 100");
    await expectScreen(page, /^THERE\nBACK$/m);
  } finally {
    server = await serve();
  }
});
