// A static file server for the site, and a Chromium with one page of it.
import fs from 'node:fs';
import http from 'node:http';
import os from 'node:os';
import path from 'node:path';
import {unzipSync} from 'fflate';
import puppeteer from 'puppeteer-core';

const kTypes = {'.html': 'text/html; charset=utf-8', '.js': 'text/javascript', '.css': 'text/css',
                '.wasm': 'application/wasm', '.svg': 'image/svg+xml', '.webmanifest': 'application/manifest+json'};
const kPatience = 120_000;  // ms; the machine may be busy

/** Worker that is refused the memory of a program, as on a small device. */
const kNoMemory = 'WebAssembly.Instance = function() { throw new RangeError("could not allocate memory"); };\n';

/** Serves `site`; below /refused/ the same site without memory for the programs. */
export function serve(site, port = 0) {
  const server = http.createServer((request, response) => {
    let name = decodeURIComponent(new URL(request.url, 'http://x').pathname);
    const refused = name.startsWith('/refused/');
    if (refused) name = name.slice('/refused'.length);
    if (name.endsWith('/')) name += 'index.html';
    const file = path.join(site, path.normalize(name));
    if (!fs.existsSync(file)) {
      response.writeHead(404).end();
      return;
    }
    const bytes = fs.readFileSync(file);
    const lead = refused && name === '/js/worker.js' ? Buffer.from(kNoMemory) : Buffer.alloc(0);
    response.writeHead(200, {'Content-Type': kTypes[path.extname(file)] ?? 'application/octet-stream'});
    response.end(Buffer.concat([lead, bytes]));
  });
  return new Promise((resolve) => {
    server.listen(port, '127.0.0.1', () => resolve({
      port: server.address().port,
      url: `http://127.0.0.1:${server.address().port}/`,
      close: () => new Promise((closed) => { server.close(closed); server.closeAllConnections(); }),
    }));
  });
}

export async function launch(scratch) {
  const executablePath = ['/usr/bin/chromium', '/usr/bin/chromium-browser', '/usr/bin/google-chrome']
      .find((name) => fs.existsSync(name));
  if (!executablePath) throw new Error('no Chromium found; Debian: apt-get install chromium');
  return puppeteer.launch({
    executablePath, protocolTimeout: kPatience,
    args: [...(process.getuid?.() === 0 ? ['--no-sandbox'] : []), '--disable-dev-shm-usage', '--disable-quic',
           `--log-net-log=${path.join(scratch, 'net.json')}`],
  });
}

/**
 * Addresses that pages, frames, workers and service workers asked for, as the browser's own log of the network tells;
 * after its end. What the browser asks on its own account (updates, the time) names no origin as its initiator.
 */
export function requestedUrls(scratch) {
  const log = JSON.parse(fs.readFileSync(path.join(scratch, 'net.json'), 'utf8'));
  const asked = log.events.map(({params}) => params).filter((params) => params?.initiator && params.url);
  return [...new Set(asked.filter(({initiator}) => initiator !== 'not an origin').map(({url}) => url))];
}

/** Processor seconds of the browser and all its processes that live. */
export function processorSeconds(browser) {
  const rows = new Map();
  for (const pid of fs.readdirSync('/proc').filter((name) => /^\d+$/.test(name))) {
    try {
      const fields = fs.readFileSync(`/proc/${pid}/stat`, 'utf8').replace(/^.*\) /s, '').split(' ');
      rows.set(Number(pid), {parent: Number(fields[1]), ticks: Number(fields[11]) + Number(fields[12])});
    } catch { /* ended meanwhile */ }
  }
  const family = (pid) => pid === browser.process().pid || (rows.has(pid) && family(rows.get(pid).parent));
  const ticks = [...rows.keys()].filter(family).reduce((sum, pid) => sum + rows.get(pid).ticks, 0);
  return ticks / 100;
}

/** One page of the site in a browser context of its own: no cache, no storage of the pages before. */
export class SitePage {
  static async open(browser, url) {
    const self = new SitePage();
    self.context = await browser.createBrowserContext();
    self.page = await self.context.newPage();
    self.folder = fs.mkdtempSync(path.join(os.tmpdir(), 'orbeln-web-'));
    self.faults = [];
    self.page.on('pageerror', (error) => self.faults.push(String(error)));
    self.page.on('console', (message) => {
      if (['error', 'warning'].includes(message.type())) self.faults.push(message.text());
    });
    self.page.setDefaultTimeout(kPatience);
    const client = await browser.target().createCDPSession();
    await client.send('Browser.setDownloadBehavior',
                      {behavior: 'allow', downloadPath: self.folder, browserContextId: self.context.id});
    await self.page.goto(url);
    return self;
  }

  async close() {
    await this.context.close();
    fs.rmSync(this.folder, {recursive: true, force: true});
  }

  text(id) {
    return this.page.$eval(`#${id}`, (element) => element.hidden ? '' : element.innerText);
  }

  async give(name, bytes, id = 'file') {
    const file = path.join(this.folder, name);
    fs.writeFileSync(file, bytes);
    const input = await this.page.$(`#${id}`);
    await input.uploadFile(file);
  }

  /** Waits for results, a choice or a problem, whatever comes; tells which. */
  async outcome() {
    await this.page.waitForFunction(() => document.getElementById('progress').hidden &&
        ['results', 'choices', 'problem'].some((id) => !document.getElementById(id).hidden));
    return this.page.evaluate(() => ['results', 'choices', 'problem']
        .find((id) => !document.getElementById(id).hidden));
  }

  async predict(name, bytes) {
    await this.give(name, bytes);
    await this.page.waitForSelector('#start:not(:disabled)');
    await this.page.click('#start');
    return this.outcome();
  }

  async saved(selector, name) {
    await this.page.click(selector);
    const file = path.join(this.folder, name);
    for (let k = 0; k < 600 && !fs.existsSync(file); ++k) await new Promise((resolve) => setTimeout(resolve, 50));
    return fs.readFileSync(file);
  }

  /** Files of the archive with everything, without its folder. */
  async everything(folder) {
    const entries = unzipSync(await this.saved('#zip', `${folder}.zip`));
    return new Map(Object.entries(entries).map(([name, bytes]) => [name.slice(folder.length + 1), Buffer.from(bytes)]));
  }
}
