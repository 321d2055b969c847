// Has the browser keep the whole site, so that it opens without a connection from the second time on.

export function keepSite() {
  navigator.serviceWorker?.register(new URL("../service-worker.js", import.meta.url)).catch(() => {
    // Then it needs a connection each time, as other pages do.
  });
}
