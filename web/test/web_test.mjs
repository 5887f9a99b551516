// The page in a real browser: its files against those of the native programs, byte for byte; bad input; the network;
// work without a connection; accessibility; pictures for a person to look at.
//
//   node --test web/test/web_test.mjs        with build/web and the native programs in build/release
import assert from 'node:assert/strict';
import {spawnSync} from 'node:child_process';
import fs from 'node:fs';
import {createRequire} from 'node:module';
import os from 'node:os';
import path from 'node:path';
import {after, before, test} from 'node:test';
import {launch, processorSeconds, requestedUrls, serve, SitePage} from './browser.mjs';
import {kExample, longTable, nef, star} from './inputs.mjs';

const kSite = path.resolve('build/web'), kNative = path.resolve('build/release');
const kShots = path.resolve('build/web-test');
const kAxe = fs.readFileSync(createRequire(import.meta.url).resolve('axe-core/axe.min.js'), 'utf8');
// Logs hold processor times and the order in which two streams came together.
const kCompared = /^(pred\w*\.tab|input\.tab|restraints\.\w+|report\.(html|json|tsv))$/;

let scratch, server, browser;

before(async () => {
  scratch = fs.mkdtempSync(path.join(os.tmpdir(), 'orbeln-web-test-'));
  fs.mkdirSync(kShots, {recursive: true});
  server = await serve(kSite);
  browser = await launch(scratch);
});

after(async () => {
  await browser?.close();
  await server?.close();
  fs.rmSync(scratch, {recursive: true, force: true});
});

async function withPage(body, at = '') {
  const site = await SitePage.open(browser, server.url + at);
  try {
    await body(site);
  } finally {
    await site.close();
  }
}

/** The folder that the native programs make by the command line that the page shows. */
function nativeResult(command, name, bytes) {
  const folder = fs.mkdtempSync(path.join(scratch, 'native-'));
  fs.writeFileSync(path.join(folder, name), bytes);
  const run = spawnSync('bash', ['-c', `export PATH="${kNative}:$PATH"; ${command}`],
                        {cwd: folder, encoding: 'utf8', env: {...process.env, ORBELN_DIR: `${kNative}/install`}});
  assert.equal(run.status, 0, run.stdout + run.stderr);
  const names = fs.readdirSync(path.join(folder, 'result')).filter((file) => kCompared.test(file));
  return new Map(names.map((file) => [file, fs.readFileSync(path.join(folder, 'result', file))]));
}

function assertSame(made, expected) {
  assert.deepEqual([...made.keys()].filter((name) => kCompared.test(name)).sort(), [...expected.keys()].sort());
  assert.ok(expected.size >= 14, `only ${expected.size} files to compare`);
  for (const [name, bytes] of expected) {
    assert.ok(bytes.equals(made.get(name)), `${name} differs from the native program's`);
  }
}

async function compareWithNative(site, name, bytes) {
  const made = await site.everything(`${name.replace(/\.\w+$/, '').replace(/[^\w.-]/g, '_')}_orbeln`);
  assertSame(made, nativeResult(await site.text('command'), name, bytes));
}

const kInputs = [
  {title: 'the example as it is', name: 'ubiquitin.tab', bytes: fs.readFileSync(kExample)},
  {title: 'NMR-STAR with HTML in its title and its name', name: '<b onclick=alert(1)>it\'s.str', bytes: star()},
  {title: 'a NEF of one chain', name: 'one-chain.nef', bytes: nef([['A', 76]])},
  {title: 'a chain of 380 residues', name: 'long.tab', bytes: longTable(5)},
  {title: 'every option', name: 'all options.tab', bytes: fs.readFileSync(kExample), options: true},
];

for (const {title, name, bytes, options} of kInputs) {
  test(`same bytes as the native programs: ${title}`, () => withPage(async (site) => {
    if (options) {
      for (const id of ['noproton', 'iso', 'offset']) await site.page.click(`#${id}`);
      await site.page.select('#align', '6');
    }
    assert.equal(await site.predict(name, bytes), 'results', await site.text('problem'));
    assert.match(await site.text('command'), options ? /--iso --noproton --offset .* -- -alignLen 6$/ : /nef$/);
    await compareWithNative(site, name, bytes);
    assert.deepEqual(site.faults, []);  // among them what the Content-Security-Policy refused
    assert.match(await site.page.title(), /^ORBEL-N/);
  }));
}

test('a dimer asks for the chain', () => withPage(async (site) => {
  const dimer = nef([['A', 76], ['<i>B</i>', 60]]);
  assert.equal(await site.predict('dimer.nef', dimer), 'choices');
  const offered = await site.page.$$eval('#choice-list li', (items) => items.map((item) => item.innerText.trim()));
  assert.equal(offered.length, 2);
  assert.match(offered[0], /^Chain A, .*76 residues/);
  assert.match(offered[1], /^Chain <i>B<\/i>, .*60 residues/);
  await site.page.click('#choice-1');
  await site.page.click('#choose');
  await site.page.waitForFunction(() => document.getElementById('choices').hidden);
  assert.equal(await site.outcome(), 'results');
  assert.match(await site.text('command'), /--chain '<i>B<\/i>'/);
  await compareWithNative(site, 'dimer.nef', dimer);
  assert.deepEqual(site.faults, []);
}));

test('bad input gets the programs\' message, and the page still works', () => withPage(async (site) => {
  const broken = star().replace(/^(\d+ 1 1 10 GLY CA) [\d.]+/m, '$1 4x.5');
  const line = broken.split('\n').findIndex((text) => text.includes(' 4x.5 ')) + 1;
  const cases = [
    {name: 'broken.str', bytes: broken, says: `broken.str:${line}: error:`, shows: '4x.5 1 1'},
    {name: 'empty.str', bytes: '', says: 'empty'},
    {name: 'binary.str', bytes: Buffer.alloc(5000).map((_, k) => (k * 7919) % 256), says: 'error'},
    {name: 'large.str', bytes: Buffer.alloc(50_000_000, 'x'), says: '50.0 MB'},
    {name: 'html.str', bytes: '<script>document.title=1</script><img src=x onerror=alert(1)>', says: 'error'},
  ];
  for (const {name, bytes, says, shows} of cases) {
    await site.give(name, bytes);
    await site.page.waitForFunction((wanted) => ['chosen', 'problem'].some(
        (id) => document.getElementById(id).textContent.startsWith(wanted)), {}, name);
    if (name !== 'large.str') await site.page.click('#start');
    assert.equal(await site.outcome(), 'problem', name);
    const problem = await site.text('problem');
    assert.ok(problem.includes(says), `${name}: ${problem}`);
    if (!shows) continue;
    assert.ok((await site.page.$eval('.named', (element) => element.innerText)).includes(shows));
    await look(site, 'problem');
  }
  assert.equal(await site.predict('ubiquitin.tab', fs.readFileSync(kExample)), 'results');
  assert.deepEqual(site.faults, []);
}));

test('a second file while a run is on is not taken; a run can be stopped', () => withPage(async (site) => {
  await site.give('long.tab', longTable(5));
  await site.page.waitForSelector('#start:not(:disabled)');
  await site.page.click('#start');
  await site.page.waitForSelector('#stop:not([hidden])');
  await site.give('second.tab', fs.readFileSync(kExample));
  await site.page.waitForFunction(() => /not taken/.test(document.getElementById('hint').textContent));
  assert.match(await site.text('chosen'), /^long\.tab/);
  await site.page.click('#stop');
  assert.equal(await site.outcome(), 'problem');
  assert.match(await site.text('problem'), /Stopped/);
  assert.equal(await site.predict('ubiquitin.tab', fs.readFileSync(kExample)), 'results');
}));

test('memory refused is said plainly', () => withPage(async (site) => {
  for (let k = 0; k < 2; ++k) {
    assert.equal(await site.predict('ubiquitin.tab', fs.readFileSync(kExample)), 'problem');
    assert.match(await site.text('problem'), /does not give this page the memory/);
  }
  assert.ok(!await site.page.$eval('#start', (button) => button.disabled));
}, 'refused/'));

test('pasted text, restraints for a structure, and a drop on the page', () => withPage(async (site) => {
  const text = fs.readFileSync(kExample, 'utf8');
  await site.page.click('summary');
  await site.page.$eval('#paste', (area, value) => {
    area.value = value;
    area.dispatchEvent(new Event('input'));
  }, text);
  assert.match(await site.text('chosen'), /^shifts\.txt/);
  await site.page.click('#start');
  assert.equal(await site.outcome(), 'results');
  const report = await (await site.page.$('#report')).contentFrame();
  assert.match(await report.$eval('h1', (element) => element.innerText), /shifts\.txt/);
  // The report's style is allowed by the page's policy.
  assert.notEqual(await report.$eval('main', (element) => getComputedStyle(element).maxWidth), 'none');
  const restraints = await site.saved('a[download="restraints.aco"]', 'restraints.aco');
  assert.match(restraints.toString(), /PHI/);
  await site.give('model.pdb', 'no atoms\n', 'coordinates');
  await site.page.waitForFunction(() => document.getElementById('coordinate-messages').textContent !== '');
  assert.match(await site.text('coordinate-messages'), /model\.pdb/);

  await site.page.evaluate(() => {
    const transfer = new DataTransfer();
    transfer.items.add(new File(['DATA'], 'dropped-file.tab'));
    dispatchEvent(new DragEvent('drop', {dataTransfer: transfer, bubbles: true, cancelable: true}));
  });
  await site.page.waitForFunction(() => /^dropped-file/.test(document.getElementById('chosen').textContent));
}));

test('the page works without a connection after the first load', async () => {
  const own = await serve(kSite);
  const site = await SitePage.open(browser, own.url);
  await site.page.waitForFunction(() => /without a connection/.test(document.getElementById('offline').textContent));
  await own.close();
  await site.page.reload();
  await site.page.click('#example');
  assert.equal(await site.outcome(), 'results', await site.text('problem'));
  await compareWithNative(site, 'ubiquitin.tab', fs.readFileSync(kExample));
  assert.deepEqual(site.faults, []);
  await site.close();
});

test('times, first and further proteins (printed, not judged)', async () => {
  const timed = async (what, body) => {
    const [start, processor] = [performance.now(), processorSeconds(browser)];
    await body();
    console.log(`${what}: ${((performance.now() - start) / 1000).toFixed(2)} s, of the processor ` +
                `${(processorSeconds(browser) - processor).toFixed(2)} s`);
  };
  let cold;
  await timed('cold start to the result, 76 residues', async () => {
    cold = await SitePage.open(browser, server.url);
    await cold.page.click('#example');
    assert.equal(await cold.outcome(), 'results');
  });
  await cold.close();  // not before: the processor times of ended processes are lost
  const site = await SitePage.open(browser, server.url);
  await site.page.waitForFunction(() => /without/.test(document.getElementById('offline').textContent));
  await timed('first protein with the tables loaded, 76 residues', async () => {
    await site.page.click('#example');
    assert.equal(await site.outcome(), 'results');
  });
  await timed('a further protein, 76 residues', () => site.predict('ubiquitin.tab', fs.readFileSync(kExample)));
  await timed('a further protein, 380 residues', () => site.predict('long.tab', longTable(5)));
  await site.close();
});

/** Pictures of the page as it is, and what the accessibility check finds in each. */
async function look(site, name) {
  for (const width of [1400, 400]) {
    for (const scheme of ['light', 'dark']) {
      await site.page.setViewport({width, height: 900});
      await site.page.emulateMediaFeatures([{name: 'prefers-color-scheme', value: scheme}]);
      await site.page.screenshot({path: path.join(kShots, `${name}-${width}-${scheme}.png`), fullPage: true});
      const wide = await site.page.evaluate(() => document.documentElement.scrollWidth - innerWidth);
      assert.ok(wide <= 0, `${name} at ${width}: ${wide} pixels too wide`);
      await site.page.evaluate(kAxe);
      const found = await site.page.evaluate(() => axe.run(document, {iframes: false}));
      const told = found.violations.map(({id, nodes}) => `${id}: ${nodes.map(({html}) => html).join('; ')}`);
      assert.deepEqual(told, [], `${name}, ${width} pixels, ${scheme}`);
      console.log(`axe, ${name} ${width} ${scheme}: ${found.passes.length} rules passed, 0 violated, undecided: ` +
                  `${found.incomplete.map(({id}) => id).join(' ') || 'none'}`);
    }
  }
}

test('pictures and accessibility, start and results; the keyboard is enough', () => withPage(async (site) => {
  await look(site, 'start');
  const focused = () => site.page.evaluate(() => document.activeElement.id);
  for (let k = 0; k < 5 && await focused() !== 'example'; ++k) await site.page.keyboard.press('Tab');
  await site.page.keyboard.press('Enter');
  assert.equal(await site.outcome(), 'results');
  assert.equal(await focused(), 'result-title');
  await look(site, 'results');
}));

test('the page may not contact another server, even if it wanted', () => withPage(async (site) => {
  const other = await serve(kSite);
  const tried = await site.page.evaluate((url) => fetch(url, {mode: 'no-cors'}).then(() => 'sent', String), other.url);
  await other.close();
  assert.match(tried, /TypeError/);
  assert.ok(site.faults.some((text) => /Content Security Policy/.test(text)), site.faults.join());
}));

// Last: the browser's own log is complete when it has ended.
test('no request leaves for another server', async () => {
  await browser.close();
  browser = null;
  const urls = requestedUrls(scratch);
  assert.ok(urls.some((url) => url.includes('/installation-')), 'the log lacks the page\'s own requests');
  assert.deepEqual(urls.filter((url) => !url.startsWith('http://127.0.0.1:')), []);
});
