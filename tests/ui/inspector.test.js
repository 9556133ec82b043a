// The inspector page in headless Chromium against a real nox-demo: it loads cleanly,
// lists the demo's entities, suspends one and shows its stack and a context, steps in,
// over and out, stops at a breakpoint and lists its event, and shows "disconnected"
// while the host is down and recovers when it is back; a host that requires a token
// gets it asked once per tab. Screenshots of the main states go to UI_ARTIFACTS.
//
//   NOX_DEMO=build/release/apps/demo/nox-demo UI_ARTIFACTS=build/ui node --test

import assert from 'node:assert/strict';
import fs from 'node:fs';
import os from 'node:os';
import path from 'node:path';
import { after, before, describe, test } from 'node:test';
import { chromium } from 'playwright-core';

import { Demo } from './demo.js';

const demoBinary = process.env.NOX_DEMO;
const artifacts = path.resolve(process.env.UI_ARTIFACTS ?? 'artifacts');
const chromiumPath = process.env.CHROMIUM ?? '/usr/bin/chromium';
const WAIT_MS = 10000;

// Polls `check` until it gives a truthy value, which it returns; fails after WAIT_MS.
async function until(what, check, timeout = WAIT_MS) {
  const deadline = Date.now() + timeout;
  let last;
  for (;;) {
    try {
      last = await check();
      if (last) return last;
    } catch (error) {
      last = error;
    }
    if (Date.now() > deadline) assert.fail(`timed out waiting for ${what} (last: ${last})`);
    await new Promise((resolve) => setTimeout(resolve, 50));
  }
}

// Headless Chromium with a fresh profile, one page of 1280x800 whose console errors and
// uncaught exceptions land in `errors`, and close() that ends both.
async function openBrowser(errors) {
  const profile = fs.mkdtempSync(path.join(os.tmpdir(), 'nox-inspector-chromium-'));
  const args = ['--disable-gpu', '--disable-quic', '--no-first-run', '--disable-background-networking',
    '--disable-component-update', '--disable-sync'];
  if (process.getuid?.() === 0) args.push('--no-sandbox');
  const browser = await chromium.launchPersistentContext(profile, {
    executablePath: chromiumPath, headless: true, args, timeout: 30000, viewport: { width: 1280, height: 800 },
  });
  const page = browser.pages()[0] ?? await browser.newPage();
  page.setDefaultTimeout(WAIT_MS);
  page.on('console', (message) => {
    if (message.type() === 'error') errors.push(message.text());
  });
  page.on('pageerror', (error) => errors.push(error.message));
  const close = async () => {
    await browser.close();
    fs.rmSync(profile, { recursive: true, force: true, maxRetries: 5 });
  };
  return { page, close };
}

describe('inspector page', { timeout: 100000 }, () => {
  const demo = new Demo(demoBinary, ['--tick-ms', '20']);
  const consoleErrors = [];
  let closeBrowser;
  let page;

  const status = () => page.getByRole('status');
  const list = (name) => page.getByRole('list', { name, exact: true });
  const button = (name) => page.getByRole('button', { name, exact: true });
  const statusText = () => status().textContent();
  const stack = () => list('Contexts').locator('li .item-text').allTextContents();
  const shoot = (name) => page.screenshot({ path: path.join(artifacts, `${name}.png`) });

  async function waitForStatus(text) {
    await until(`the status "${text}"`, async () => (await statusText()) === text);
  }

  // Presses `name` and waits for a new stop of `entity` with a stack other than `before`.
  async function stepTo(name, entity, before) {
    await until(`${name} to be enabled`, () => button(name).isEnabled());
    await button(name).click();
    return until(`a new stop after ${name}`, async () => {
      if ((await statusText()) !== `suspended (entity ${entity})`) return null;
      const now = await stack();
      return JSON.stringify(now) !== JSON.stringify(before) ? now : null;
    });
  }

  before(async () => {
    assert.ok(demoBinary, 'NOX_DEMO names the nox-demo program');
    fs.mkdirSync(artifacts, { recursive: true });
    await demo.start();
    ({ page, close: closeBrowser } = await openBrowser(consoleErrors));
  });

  after(async () => {
    await closeBrowser?.();
    await demo.stop();
  });

  test('the demo prints the page first, and the page loads with no console error', async () => {
    assert.match(demo.output.split('\n').find((line) => !line.startsWith('nox/')) ?? '',
      new RegExp(`^Inspector: http://127\\.0\\.0\\.1:${demo.port}/inspector/$`));
    const response = await page.goto(`${demo.url}/inspector/`);
    assert.equal(response.status(), 200);
    await until('the page to reach the host', async () => (await page.locator('#connection').textContent()) === 'connected');
    await waitForStatus('running');
    // A few refreshes, so that errors of the polling show too.
    await page.waitForTimeout(1200);
    assert.deepEqual(consoleErrors, []);
    await shoot('01-loaded');
  });

  test('the entities of the demo are listed, and the engines as switches', async () => {
    const entities = list('Entities').getByRole('listitem');
    await until('four entities', async () => (await entities.count()) === 4);
    assert.deepEqual((await entities.allTextContents()).map((text) => text.trim()),
      ['entity 1', 'entity 2', 'entity 3', 'entity 4']);
    for (const engine of ['debug', 'sim', 'events']) {
      assert.equal(await page.getByRole('switch', { name: engine }).count(), 1, engine);
    }
    assert.equal(await page.getByRole('switch', { name: 'debug' }).isChecked(), true);
  });

  test('suspending an entity shows its stack and a context\'s details', async () => {
    await list('Entities').getByRole('button', { name: 'entity 2' }).click();
    assert.equal(await button('Suspend').isEnabled(), true);
    assert.equal(await button('Resume').isEnabled(), false);
    assert.match(await button('Suspend').getAttribute('title'), /F6/);
    await button('Suspend').click();
    await waitForStatus('suspended (entity 2)');
    await until('the buttons of a suspended host', async () => !(await button('Suspend').isEnabled()) &&
      (await button('Resume').isEnabled()) && (await button('Step in').isEnabled()));
    // The stack may be empty between two steps of the agent: step into the next one.
    let frames = await stack();
    if (frames.length === 0) frames = await stepTo('Step in', 2, frames);
    assert.ok(frames.every((location) => location.startsWith('sim:agents/2')), frames.join());
    const details = page.getByRole('region', { name: 'Context details' });
    await until('the top context\'s details', async () =>
      (await details.getByRole('treeitem').allTextContents()).some((text) => text.includes(frames[0])));
    const tree = details.getByRole('tree');
    assert.ok(await tree.getByRole('treeitem', { name: /^agent:\s*2$/ }).count() === 1);
    await shoot('02-suspended');
    await page.emulateMedia({ colorScheme: 'dark' });
    await page.setViewportSize({ width: 1920, height: 1080 });
    await shoot('02-suspended-dark-1920');
    await page.emulateMedia({ colorScheme: 'light' });
    await page.setViewportSize({ width: 1280, height: 800 });
  });

  test('step in, over and out change the stack', async () => {
    // Into the agent's inner frames (think or move): two contexts deep.
    let frames = await stack();
    for (let i = 0; i < 8 && frames.length < 2; ++i) frames = await stepTo('Step in', 2, frames);
    assert.equal(frames.length, 2, frames.join());
    assert.match(frames[0], /^sim:agents\/2\/(think|move)$/);

    // Over the inner frame: it returns, and the agent stops in its outer frame.
    frames = await page.keyboard.press('F10').then(() => until('a stop after F10', async () => {
      const now = await stack();
      return (await statusText()) === 'suspended (entity 2)' && now.length === 1 ? now : null;
    }));
    assert.deepEqual(frames, ['sim:agents/2']);

    for (let i = 0; i < 8 && frames.length < 2; ++i) frames = await stepTo('Step in', 2, frames);
    assert.equal(frames.length, 2, frames.join());
    frames = await stepTo('Step out', 2, frames);
    assert.deepEqual(frames, ['sim:agents/2']);
    await shoot('03-stepped');

    await button('Resume').click();
    await waitForStatus('running');
  });

  test('a breakpoint stops the host at its location and lists its event; it can be removed', async () => {
    await page.getByLabel('Breakpoint location').fill('sim:agents/3/move');
    await button('Add breakpoint').click();
    await until('the breakpoint listed', async () =>
      (await list('Breakpoints').getByRole('listitem').allTextContents()).some((text) => text.includes('sim:agents/3/move')));
    // Breakpoint events are queued by the "events" engine, which the page turned on.
    await until('the events engine on', () => page.getByRole('switch', { name: 'events' }).isChecked());
    await waitForStatus('suspended (entity 3)');
    await until('the stop at the breakpoint', async () => (await stack())[0] === 'sim:agents/3/move');
    const events = list('Events').getByRole('listitem');
    await until('the breakpoint event', async () => (await events.allTextContents()).some(
      (text) => text.includes('breakpoint') && text.includes('entity 3') && text.includes('sim:agents/3/move')));
    await shoot('04-breakpoint');

    await list('Breakpoints').getByRole('button', { name: /Remove/ }).click();
    await until('no breakpoint left', async () => (await list('Breakpoints').getByRole('listitem').count()) === 0);
    await button('Clear events').click();
    await until('no event left', async () => (await events.count()) === 0);
    await page.keyboard.press('F8');
    await waitForStatus('running');
    // Removed: the agent passes the location again and again without stopping.
    await page.waitForTimeout(1000);
    assert.equal(await statusText(), 'running');
    assert.deepEqual(consoleErrors, []);
  });

  test('a host that goes away shows "disconnected" and recovers when it is back', async () => {
    const port = demo.port;
    assert.equal(await demo.stop(), 0, demo.output);
    const connection = page.locator('#connection');
    await until('"disconnected"', async () => (await connection.textContent()) === 'disconnected');
    assert.equal(await page.getByText('disconnected', { exact: true }).count(), 1);
    await shoot('05-disconnected');

    await demo.start(port);
    // The poller backs off to a few seconds between tries while the host is away.
    await until('the page to reconnect', async () => (await connection.textContent()) === 'connected', 15000);
    await waitForStatus('running');
    await until('the entities again', async () => (await list('Entities').getByRole('listitem').count()) === 4);
    await shoot('06-recovered');
  });
});

describe('inspector page of a host that requires a token', { timeout: 60000 }, () => {
  const demo = new Demo(demoBinary, ['--tick-ms', '20', '--token', 's3cret']);
  let closeBrowser;
  let page;

  before(async () => {
    await demo.start();
    ({ page, close: closeBrowser } = await openBrowser([]));
  });

  after(async () => {
    await closeBrowser?.();
    await demo.stop();
  });

  test('asks for the token once, sends it, and keeps it for the tab only', async () => {
    const requests = [];
    page.on('request', (request) => requests.push(request));
    await page.goto(`${demo.url}/inspector/`);
    const dialog = page.getByRole('dialog');
    await dialog.waitFor();
    await page.getByRole('textbox', { name: 'Access token' }).fill('wrong');
    await page.getByRole('button', { name: 'Connect' }).click();
    await until('the wrong token refused', async () => (await page.locator('#token-reason').textContent()).includes('refused'));
    await page.screenshot({ path: path.join(artifacts, '07-token.png') });
    await page.getByRole('textbox', { name: 'Access token' }).fill('s3cret');
    await page.getByRole('button', { name: 'Connect' }).click();
    await until('the entities', async () => (await page.getByRole('list', { name: 'Entities' }).getByRole('listitem').count()) === 4);
    assert.equal(await dialog.isVisible(), false);

    // A reload of the tab asks nothing; the token never shows in a URL.
    await page.reload();
    await until('the entities after a reload', async () =>
      (await page.getByRole('list', { name: 'Entities' }).getByRole('listitem').count()) === 4);
    assert.equal(await dialog.isVisible(), false);
    assert.ok(requests.every((request) => !request.url().includes('s3cret')));
    const apiCalls = requests.filter((request) => new URL(request.url()).pathname.startsWith('/api/'));
    assert.ok(apiCalls.length > 0);
    assert.equal(await apiCalls.at(-1).headerValue('authorization'), 'Bearer s3cret');
  });
});
