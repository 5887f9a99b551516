// The worker: holds the installation and the compiled programs, and carries out one request after the other.
import {site} from '../site.js';
import {loadInstallation} from './installation.js';
import {Pipeline} from './pipeline.js';
import {isMemoryProblem, kNoMemory, PlainError, Programs} from './programs.js';

const kBase = new URL('../', import.meta.url).href;
const kLineInterval = 100;  // ms between two lines that are shown

function compiler() {
  const loaded = new Map();
  const load = async (name) => {
    const [module, response] = await Promise.all([import(new URL(`wasm/${name}.js`, kBase).href),
                                                  fetch(new URL(`wasm/${name}.wasm`, kBase))]);
    if (!response.ok) throw new PlainError(`${name} could not be loaded: the server answers ${response.status}.`);
    return {factory: module.default, wasm: await WebAssembly.compile(await response.arrayBuffer())};
  };
  return (name) => {
    if (!loaded.has(name)) {
      loaded.set(name, load(name));
      loaded.get(name).catch(() => loaded.delete(name));  // the next request tries again
    }
    return loaded.get(name);
  };
}

const load = compiler();
let programs = null;

/** Fetches what every run needs; once. */
function prepare() {
  programs ??= (async () => {
    const archive = site.installation;
    const {files, stored} = await loadInstallation(
        kBase, archive, (bytes) => postMessage({type: 'loading', bytes, total: archive.bytes}));
    await Promise.all(site.programs.map(load));
    stored.then((kept) => postMessage({type: 'stored', kept}));
    return new Programs(load, files);
  })();
  programs.catch(() => { programs = null; });
  return programs;
}

function reporter() {
  let shown = 0;
  return {
    step: (name) => postMessage({type: 'step', name}),
    line(text) {
      const now = performance.now();
      if (text.trim() === '' || now - shown < kLineInterval) return;
      shown = now;
      postMessage({type: 'line', text: text.trim().slice(0, 200)});
    },
  };
}

const requests = {
  prepare: async () => { await prepare(); },
  predict: async ({job}) => new Pipeline(await prepare(), reporter()).run(job),
  coordinates: async ({files, coordinates}) =>
      new Pipeline(await prepare(), reporter()).withCoordinates(files, coordinates),
};

function plainly(error) {
  if (error instanceof PlainError) return error.message;
  if (isMemoryProblem(error)) return kNoMemory;
  if (error instanceof TypeError && /fetch|import/i.test(error.message)) {
    return 'A part of the page could not be loaded: no connection. Reload the page when there is one.';
  }
  return `Unexpected fault: ${error?.message ?? error}`;
}

self.addEventListener('message', async ({data}) => {
  try {
    postMessage({type: 'answer', id: data.id, result: await requests[data.type](data)});
  } catch (error) {
    postMessage({type: 'fault', id: data.id, message: plainly(error)});
  }
});
