// The page's poller on its own, in real time: one refresh at a time, never two starts
// closer than a quarter of a second, a slower pace while refreshes fail, and the
// normal pace back after the first one that works.

import assert from 'node:assert/strict';
import { test } from 'node:test';

import { FASTEST_MS, Poller, SLOWEST_MS, pauseAfter } from '../../inspector/js/poller.js';

// Timers may fire a millisecond early.
const SLACK_MS = 3;

function sleep(milliseconds) {
  return new Promise((resolve) => setTimeout(resolve, milliseconds));
}

// A refresh that records when it starts, how many run at once, and fails while
// `failing` is set.
function recorder(durationMs) {
  const record = { starts: [], running: 0, mostAtOnce: 0, failing: false };
  record.refresh = async () => {
    record.starts.push(performance.now());
    record.running += 1;
    record.mostAtOnce = Math.max(record.mostAtOnce, record.running);
    await sleep(durationMs);
    record.running -= 1;
    if (record.failing) throw new Error('no answer');
  };
  return record;
}

function gaps(starts) {
  return starts.slice(1).map((start, i) => start - starts[i]);
}

test('the pause grows with failures, never below the fastest pace nor above the slowest', () => {
  let previous = 0;
  for (let failures = 0; failures < 12; ++failures) {
    const pause = pauseAfter(failures);
    assert.ok(pause >= FASTEST_MS && pause <= SLOWEST_MS, `${failures}: ${pause}`);
    assert.ok(pause >= previous, `${failures}: ${pause} < ${previous}`);
    previous = pause;
  }
  assert.ok(pauseAfter(1) > pauseAfter(0));
  assert.equal(pauseAfter(11), SLOWEST_MS);
});

test('a slow host never gets two refreshes at once, and asking often never beats the pace', async () => {
  const record = recorder(300);
  const poller = new Poller(record.refresh, () => {});
  poller.start();
  // Asked for again and again, as a user clicking commands would.
  const asking = setInterval(() => poller.refreshSoon(), 20);
  await sleep(1600);
  clearInterval(asking);
  poller.stop();
  await sleep(350);
  assert.equal(record.mostAtOnce, 1);
  assert.ok(record.starts.length >= 3, `${record.starts.length} refreshes`);
  for (const gap of gaps(record.starts)) assert.ok(gap >= FASTEST_MS - SLACK_MS, `started ${gap} ms apart`);
});

test('asking for a refresh cuts the pause short, down to the fastest pace', async () => {
  const record = recorder(0);
  const poller = new Poller(record.refresh, () => {});
  poller.start();
  await sleep(50);
  poller.refreshSoon();
  await sleep(FASTEST_MS + 100);
  poller.stop();
  assert.equal(record.starts.length, 2);
  const [gap] = gaps(record.starts);
  assert.ok(gap >= FASTEST_MS - SLACK_MS && gap < pauseAfter(0), `started ${gap} ms apart`);
});

test('failures slow the pace down, and the first success brings it back', async () => {
  const record = recorder(0);
  record.failing = true;
  const failures = [];
  const poller = new Poller(record.refresh, (error, count) => failures.push(count));
  poller.start();
  await sleep(pauseAfter(0) + pauseAfter(1) + pauseAfter(2) - 200);
  // Three tries so far, each after a longer pause than the one before.
  assert.deepEqual(failures, [1, 2, 3]);
  const [first, second] = gaps(record.starts);
  assert.ok(first >= pauseAfter(1) - SLACK_MS && second >= pauseAfter(2) - SLACK_MS, `${first}, ${second}`);

  record.failing = false;
  await sleep(pauseAfter(3) + 2 * pauseAfter(0));
  poller.stop();
  const after = gaps(record.starts).slice(3);
  assert.ok(after.length >= 1, 'refreshes once the host answers again');
  assert.ok(after.every((gap) => gap < pauseAfter(1)), `back to the normal pace: ${after}`);
});
