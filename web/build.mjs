// Assembles the static site from the pages in web/site, the WebAssembly programs and the installation's tables.
//
//   node web/build.mjs WASM-BUILD INSTALLATION SITE
//
// The example is predicted once with what was built, in this process: a site that cannot do so is not made. Its report
// also tells the styles that the page's Content-Security-Policy has to allow, by their hashes.
import {execFileSync} from 'node:child_process';
import {createHash} from 'node:crypto';
import fs from 'node:fs';
import path from 'node:path';
import {pathToFileURL} from 'node:url';
import {constants, gzipSync} from 'node:zlib';

const [wasmBuild, installation, out] = process.argv.slice(2).map((name) => path.resolve(name));
const web = import.meta.dirname ?? path.dirname(new URL(import.meta.url).pathname);
const root = path.dirname(web);
const kPrograms = ['orbeln', 'orbeln-convert', 'orbeln-report', 'orbeln-restraints'];
const kExample = 'examples/ubiquitin/ubiquitin.tab';

const hash = (algorithm, bytes, encoding = 'hex') => createHash(algorithm).update(bytes).digest(encoding);
const inSite = (name) => path.join(out, name);

function copy(from, to) {
  fs.mkdirSync(path.dirname(inSite(to)), {recursive: true});
  fs.cpSync(from, inSite(to), {recursive: true});
}

function filesBelow(folder, prefix = '') {
  const entries = fs.readdirSync(path.join(folder, prefix), {withFileTypes: true});
  return entries.flatMap((entry) => entry.isDirectory() ? filesBelow(folder, `${prefix}${entry.name}/`) :
                                                          [`${prefix}${entry.name}`]).sort();
}

/** The tables as one archive, the same bytes whenever they are the same. */
function packInstallation() {
  const options = ['--sort=name', '--mtime=@0', '--owner=0', '--group=0', '--numeric-owner', '--mode=a=r,u+w',
                   '--format=ustar', '--no-recursion'];
  // The binary image is larger than the text that it was made from, and made for memory that processes share.
  const names = fs.readdirSync(path.join(installation, 'tab')).filter((name) => !name.endsWith('.image'));
  const tables = names.map((name) => `tab/${name}`).sort();
  const tar = execFileSync('tar', [...options, '-cf', '-', ...tables], {cwd: installation, maxBuffer: 2 ** 30});
  const packed = gzipSync(tar, {level: constants.Z_BEST_COMPRESSION, memLevel: 9});
  // An ending that no server takes for a reason to unpack or pack it on the way.
  const file = `installation-${hash('sha256', tar).slice(0, 12)}.bin`;
  fs.writeFileSync(inSite(file), packed);
  return {description: {file, bytes: packed.length, unpackedBytes: tar.length}, tar};
}

async function predictExample(tar) {
  // The glue code is made for workers; of a worker it wants these names.
  Object.assign(globalThis, {self: globalThis, location: {href: pathToFileURL(`${out}/`).href}, importScripts() {}});
  const {Programs} = await import(pathToFileURL(inSite('js/programs.js')));
  const {Pipeline, kDefaults} = await import(pathToFileURL(inSite('js/pipeline.js')));
  const {untar} = await import(pathToFileURL(inSite('js/installation.js')));
  const load = async (name) => ({
    factory: (await import(pathToFileURL(inSite(`wasm/${name}.js`)))).default,
    wasm: await WebAssembly.compile(fs.readFileSync(inSite(`wasm/${name}.wasm`))),
  });
  const pipeline = new Pipeline(new Programs(load, untar(tar)), {step() {}, line() {}});
  const bytes = fs.readFileSync(inSite(kExample));
  const job = {name: path.basename(kExample), bytes, sequence: null, options: kDefaults};
  const outcome = await pipeline.run(job);
  if (outcome.kind !== 'done') throw new Error(`the example cannot be predicted: ${JSON.stringify(outcome)}`);
  return outcome.files;
}

function policyHashes(report) {
  const styles = [...report.matchAll(/<style>([^]*?)<\/style>/g)].map(([, text]) => text);
  return styles.map((text) => `'sha256-${hash('sha256', text, 'base64')}'`).join(' ');
}

function replaceIn(name, what, by) {
  const text = fs.readFileSync(inSite(name), 'utf8');
  if (!text.includes(what)) throw new Error(`${name}: no ${what} to replace`);
  fs.writeFileSync(inSite(name), text.replaceAll(what, () => by));
}

fs.rmSync(out, {recursive: true, force: true});
copy(path.join(web, 'site'), '.');
for (const program of kPrograms) {
  for (const ending of ['js', 'wasm']) copy(path.join(wasmBuild, `${program}.${ending}`), `wasm/${program}.${ending}`);
}
const fflate = path.join(web, 'node_modules/fflate');
copy(path.join(fflate, 'esm/browser.js'), 'vendor/fflate.js');
copy(path.join(fflate, 'LICENSE'), 'vendor/fflate.LICENSE.txt');
copy(path.join(root, kExample), kExample);

const {description, tar} = packInstallation();
const files = await predictExample(tar);
replaceIn('index.html', '@REPORT_STYLES@', policyHashes(Buffer.from(files.get('report.html')).toString()));

const notKept = ['sw.js', description.file];
const shell = filesBelow(out).filter((name) => !notKept.includes(name) && !name.includes('LICENSE'));
const content = shell.map((name) => [name, hash('sha256', fs.readFileSync(inSite(name)))]);
const cmake = fs.readFileSync(path.join(root, 'CMakeLists.txt'), 'utf8');
const [, version] = /project\(orbeln VERSION ([\d.]+)/.exec(cmake);
const site = {
  version: `${version} (${hash('sha256', JSON.stringify([content, description])).slice(0, 8)})`,
  identity: hash('sha256', fs.readFileSync(path.join(installation, 'tab/TABLES.sha256'))).slice(0, 12),
  installation: description,
  programs: kPrograms,
  example: kExample,
  shell: ['./', 'site.js', ...shell],
};
site.totalBytes = description.bytes + shell.reduce((sum, name) => sum + fs.statSync(inSite(name)).size, 0);
fs.writeFileSync(inSite('site.js'), `export const site = ${JSON.stringify(site, null, 2)};\n`);
const kept = {version: site.version, installation: description, shell: site.shell};
replaceIn('sw.js', "'@SITE@'", JSON.stringify(kept));
const megabytes = (bytes) => `${(bytes / 1e6).toFixed(1)} MB`;
console.log(`${out}: ${megabytes(site.totalBytes)} to load, of which tables ${megabytes(description.bytes)}`);
