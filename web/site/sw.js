// The service worker: keeps the page, its scripts and the programs, so that it opens without a connection. The tables
// are kept by the page's worker, in a cache of their own that outlives a new version as long as they are the same.
const site = '@SITE@';  // put in by the build, so that every version has another service worker
const scope = self.registration.scope;
const kShell = `orbeln-shell ${scope} ${site.version}`;
const kData = `orbeln-data ${scope}`;

self.addEventListener('install', (event) => {
  const fresh = site.shell.map((file) => new Request(new URL(file, scope), {cache: 'no-cache'}));
  event.waitUntil(caches.open(kShell).then((cache) => cache.addAll(fresh)));
});

async function discardOldVersions() {
  for (const name of await caches.keys()) {
    if (name.startsWith(`orbeln-shell ${scope} `) && name !== kShell) await caches.delete(name);
  }
  const data = await caches.open(kData);
  const wanted = new URL(site.installation.file, scope).href;
  for (const request of await data.keys()) {
    if (request.url !== wanted) await data.delete(request);
  }
  await self.clients.claim();  // a new version waits until no page of the old one is open, so this takes none over
}

self.addEventListener('activate', (event) => event.waitUntil(discardOldVersions()));

self.addEventListener('fetch', (event) => {
  if (event.request.method !== 'GET' || !event.request.url.startsWith(scope)) return;
  const kept = caches.open(kShell).then((cache) => cache.match(event.request, {ignoreSearch: true}));
  event.respondWith(kept.then((response) => response ?? fetch(event.request)));
});
