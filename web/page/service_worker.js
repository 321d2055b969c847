// Keeps the whole site in the browser. What is above these lines is written when the site is built: the names of all files,
// and a version that is another one whenever one of them is.
/* global VERSION, FILES */

const PREFIX = `korvane ${self.registration.scope} `;
const NAME = PREFIX + VERSION;

self.addEventListener("install", (event) => {
  self.skipWaiting();
  event.waitUntil((async () => {
    const cache = await caches.open(NAME);
    // Past the browser's other cache, which may hold what belongs to another version.
    await cache.addAll(FILES.map((file) => new Request(file, { cache: "reload" })));
  })());
});

self.addEventListener("activate", (event) => {
  event.waitUntil((async () => {
    for (const name of await caches.keys()) {
      if (name.startsWith(PREFIX) && name !== NAME) await caches.delete(name);
    }
    await self.clients.claim();
  })());
});

self.addEventListener("fetch", (event) => {
  const address = new URL(event.request.url);
  if (event.request.method !== "GET" || !address.href.startsWith(self.registration.scope)) return;
  address.search = "";
  address.hash = "";
  if (address.pathname.endsWith("/")) address.pathname += "index.html";
  event.respondWith((async () => {
    const cache = await caches.open(NAME);
    return (await cache.match(address.href)) ?? fetch(event.request);
  })());
});
