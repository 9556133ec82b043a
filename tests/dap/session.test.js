// One whole debugging session against a running nox-demo, as an editor would drive it:
// attach, look at the entities, pause, step, break on locations, evaluate resources,
// and leave the host running.
'use strict';

const { describe, it, before, after } = require('node:test');
const assert = require('node:assert/strict');
const fs = require('node:fs');
const os = require('node:os');
const path = require('node:path');
const { getJson, sleep, startDemo, startClient, stopClient, requestAndWait } = require('./helpers');

const invalidEntity = 4294967295;

describe('a session with a running host', { timeout: 120000 }, () => {
  let host;
  let client;
  let trace;

  before(async () => {
    host = await startDemo();
    trace = path.join(fs.mkdtempSync(path.join(os.tmpdir(), 'nox-dap-')), 'transcript.log');
    client = await startClient(trace);
  });

  after(async () => {
    if (host) host.child.kill('SIGKILL');
    if (process.env.NOX_DAP_TRANSCRIPT && fs.existsSync(trace)) fs.copyFileSync(trace, process.env.NOX_DAP_TRANSCRIPT);
  });

  const topFrame = async (threadId) => (await client.stackTraceRequest({ threadId })).body.stackFrames[0];

  // Steps with `send` and answers the stopped event it causes.
  const stepWith = async (send) => {
    const { event } = await requestAndWait(client, 'stopped', send);
    assert.equal(event.body.reason, 'step');
    assert.equal(event.body.threadId, 1);
    return event;
  };

  it('initializes with the capabilities editors rely on', async () => {
    const { body } = await client.initializeRequest();
    assert.equal(body.supportsFunctionBreakpoints, true);
    assert.equal(body.supportsHitConditionalBreakpoints, true);
    assert.equal(body.supportsConfigurationDoneRequest, true);
    assert.equal(body.supportsTerminateRequest, false);
    assert.equal(body.supportsEvaluateForHovers, false);
  });

  it('attaches, then announces itself initialized', async () => {
    const { response } = await requestAndWait(client, 'initialized', () => client.attachRequest({ url: host.url }));
    assert.equal(response.success, true);
    await client.configurationDoneRequest();
  });

  it('lists one thread per entity', async () => {
    const { body } = await client.threadsRequest();
    assert.deepEqual(body.threads, [1, 2, 3, 4].map((id) => ({ id, name: `entity ${id}` })));
  });

  it('pauses one entity and reports the stop', async () => {
    const { event } = await requestAndWait(client, 'stopped', () => client.pauseRequest({ threadId: 1 }));
    assert.deepEqual(event.body, { reason: 'pause', threadId: 1, allThreadsStopped: true });
    assert.equal((await getJson(host.url, 'debug/suspend')).suspended, true);
  });

  it('shows the contexts as frames, top first, with ids stable while stopped', async () => {
    const first = (await client.stackTraceRequest({ threadId: 1 })).body;
    const contexts = await getJson(host.url, 'debug/entities/1/contexts');
    assert.deepEqual(first.stackFrames.map((frame) => frame.name), contexts.map((c) => c.location).reverse());
    assert.match(first.stackFrames.at(-1).name, /^sim:agents\/1$/);
    const again = (await client.stackTraceRequest({ threadId: 1 })).body;
    assert.deepEqual(again.stackFrames.map((frame) => frame.id), first.stackFrames.map((frame) => frame.id));
  });

  it('expands a frame\'s context into typed variables', async () => {
    const frame = await topFrame(1);
    const { scopes } = (await client.scopesRequest({ frameId: frame.id })).body;
    assert.equal(scopes.length, 1);
    assert.equal(scopes[0].name, 'Context');
    const { variables } = (await client.variablesRequest({ variablesReference: scopes[0].variablesReference })).body;
    const named = Object.fromEntries(variables.map((v) => [v.name, v]));
    assert.deepEqual([named.agent.value, named.agent.type, named.agent.variablesReference], ['1', 'integer', 0]);
    assert.equal(named.location.value, `"${frame.name}"`);
    assert.equal(named.location.type, 'string');
    assert.equal(named.energy.type, 'real');
    assert.equal(named.position.type, 'object');
    assert.ok(named.position.variablesReference > 0);
    const position = (await client.variablesRequest({ variablesReference: named.position.variablesReference })).body;
    assert.deepEqual(position.variables.map((v) => [v.name, v.type]), [['x', 'real'], ['y', 'real']]);
  });

  it('steps in, over and out, each ending in a stopped event', async () => {
    // In until the entity is two contexts deep (in "think" or "move").
    let depth = 0;
    for (let steps = 0; steps < 8 && depth !== 2; ++steps) {
      await stepWith(() => client.stepInRequest({ threadId: 1 }));
      depth = (await client.stackTraceRequest({ threadId: 1 })).body.totalFrames;
    }
    assert.equal(depth, 2);
    await stepWith(() => client.stepOutRequest({ threadId: 1 }));
    assert.equal((await topFrame(1)).name, 'sim:agents/1');
    await stepWith(() => client.nextRequest({ threadId: 1 }));
    assert.match((await topFrame(1)).name, /^sim:agents\/1/);
  });

  it('stops on a function breakpoint and says which', async () => {
    const { body } = await client.setFunctionBreakpointsRequest({ breakpoints: [{ name: 'sim:agents/2/move' }] });
    assert.equal(body.breakpoints.length, 1);
    assert.equal(body.breakpoints[0].verified, true);
    const stopped = client.waitForEvent('stopped');
    const { event: continued } = await requestAndWait(client, 'continued', () => client.continueRequest({ threadId: 1 }));
    assert.equal(continued.body.allThreadsContinued, true);
    const { body: stop } = await stopped;
    assert.equal(stop.reason, 'function breakpoint');
    assert.equal(stop.threadId, 2);
    assert.deepEqual(stop.hitBreakpointIds, [body.breakpoints[0].id]);
    assert.equal((await topFrame(2)).name, 'sim:agents/2/move');
  });

  it('evaluates resource paths into expandable results', async () => {
    const { body } = await client.evaluateRequest({ expression: 'sim/agents/2', context: 'repl' });
    assert.equal(body.type, 'object');
    const { variables } = (await client.variablesRequest({ variablesReference: body.variablesReference })).body;
    const named = Object.fromEntries(variables.map((v) => [v.name, v]));
    assert.equal(named.id.value, '2');
    assert.equal(named.name.value, '"agent-2"');
    await assert.rejects(client.evaluateRequest({ expression: 'sim/nothing', context: 'repl' }), /no such resource/);
    await assert.rejects(client.evaluateRequest({ expression: 'a b', context: 'repl' }), /not a resource path/);
  });

  it('stops on a hit-count breakpoint at its count, replacing the earlier set', async () => {
    const ticks = async () => {
      const { body } = await client.evaluateRequest({ expression: 'sim', context: 'repl' });
      const { variables } = (await client.variablesRequest({ variablesReference: body.variablesReference })).body;
      return Number(variables.find((v) => v.name === 'ticks').value);
    };
    const refused = await client.setFunctionBreakpointsRequest({
      breakpoints: [{ name: 'sim:agents/3/move', hitCondition: 'often' }, { name: 'not a location' }],
    });
    assert.deepEqual(refused.body.breakpoints.map((b) => b.verified), [false, false]);
    const { body } = await client.setFunctionBreakpointsRequest({
      breakpoints: [{ name: 'sim:agents/3/move', hitCondition: '3' }],
    });
    assert.equal(body.breakpoints[0].verified, true);
    // Stopped at agent 2's move: agent 3 moves later in this tick, so its third move is two ticks on.
    const before = await ticks();
    const { event } = await requestAndWait(client, 'stopped', () => client.continueRequest({ threadId: 2 }));
    assert.equal(event.body.reason, 'function breakpoint');
    assert.equal(event.body.threadId, 3);
    assert.deepEqual(event.body.hitBreakpointIds, [body.breakpoints[0].id]);
    assert.equal(await ticks(), before + 2);
  });

  it('answers what it does not support, and keeps serving', async () => {
    await assert.rejects(client.customRequest('restartFrame', { frameId: 1 }), /not supported/);
    await assert.rejects(client.stackTraceRequest({ threadId: 99 }), /not registered/);
    assert.equal((await client.threadsRequest()).body.threads.length, 4);
  });

  it('leaves on disconnect, resuming the host it stopped and leaving it running', async () => {
    assert.equal((await getJson(host.url, 'debug/suspend')).suspended, true);
    await client.disconnectRequest({});
    const before = (await getJson(host.url, 'sim')).ticks;
    await sleep(300);
    // The hit-count breakpoint would stop agent 3 every tick: its subscription is gone too.
    assert.deepEqual(await getJson(host.url, 'debug/suspend'), { suspended: false, entity: invalidEntity });
    assert.ok((await getJson(host.url, 'sim')).ticks > before);
    assert.equal(host.child.exitCode, null);
  });

  it('ends cleanly when the editor closes it', async () => {
    assert.equal(await stopClient(client), 0);
  });
});
