// The tables of the installation: one compressed archive, fetched once, kept in the browser's cache.
import {isMemoryProblem, PlainError} from './programs.js';

const kBlock = 512;  // tar

async function cached(base) {
  // Browsers give the cache to secure pages only (https or this computer); without it the page works, online.
  try {
    return await globalThis.caches?.open(`orbeln-data ${base}`);
  } catch {
    return undefined;
  }
}

async function fetched(url, cache) {
  const kept = await cache?.match(url);
  if (kept) return {response: kept, stored: Promise.resolve(true)};
  let response;
  try {
    response = await fetch(url);
  } catch {
    throw new PlainError('The tables could not be loaded: no connection. Once loaded, the page works without.');
  }
  if (!response.ok) throw new PlainError(`The tables could not be loaded: the server answers ${response.status}.`);
  const stored = cache ? cache.put(url, response.clone()).then(() => true, () => false) : Promise.resolve(false);
  return {response, stored};
}

/** The whole of a stream, unpacked, whose size is known. */
async function unpacked(response, archive, onBytes) {
  const bytes = new Uint8Array(archive.unpackedBytes);
  let loaded = 0;
  const counted = new TransformStream({
    transform(chunk, controller) {
      loaded += chunk.length;
      onBytes(loaded);
      controller.enqueue(chunk);
    },
  });
  let filled = 0;
  const reader = response.body.pipeThrough(counted).pipeThrough(new DecompressionStream('gzip')).getReader();
  for (;;) {
    const {done, value} = await reader.read();
    if (done) break;
    bytes.set(value, filled);
    filled += value.length;
  }
  if (filled !== bytes.length) throw new TypeError('too short');
  return bytes;
}

/** Files of a tar archive by their path, as views of it. */
export function untar(archive) {
  const text = new TextDecoder();
  const field = (at, length) => text.decode(archive.subarray(at, at + length)).replace(/\0.*$/s, '');
  const files = new Map();
  for (let at = 0; at + kBlock <= archive.length && archive[at] !== 0;) {
    const size = Number.parseInt(field(at + 124, 12), 8);
    const isFile = field(at + 156, 1) === '0';
    if (isFile) files.set(field(at, 100).replace(/^\.\//, ''), archive.subarray(at + kBlock, at + kBlock + size));
    at += kBlock + Math.ceil(size / kBlock) * kBlock;
  }
  return files;
}

/**
 * @param base URL of the site's folder
 * @param archive {file, bytes, unpackedBytes}
 * @returns {files, stored}: the tables, and a promise that tells whether the browser has kept them
 */
export async function loadInstallation(base, archive, onBytes) {
  const url = new URL(archive.file, base).href;
  const cache = await cached(base);
  const {response, stored} = await fetched(url, cache);
  try {
    return {files: untar(await unpacked(response, archive, onBytes)), stored};
  } catch (error) {
    if (isMemoryProblem(error)) throw error;
    await stored;
    await cache?.delete(url);  // never a second time the same damage
    throw new PlainError('The tables arrived damaged or incomplete. Reload the page to fetch them again.');
  }
}
