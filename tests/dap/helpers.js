// Shared by the end-to-end tests: a real nox-demo on a free loopback port, and a
// protocol client driving a real nox-dap.
'use strict';

const { spawn } = require('node:child_process');
const net = require('node:net');
const { DebugClient } = require('@vscode/debugadapter-testsupport');

const adapter = process.env.NOX_DAP;
const demo = process.env.NOX_DEMO;
if (!adapter || !demo) {
  throw new Error('set NOX_DAP and NOX_DEMO to the nox-dap and nox-demo programs (make dap-test does)');
}

// A loopback port nobody listens on right now.
function freePort() {
  return new Promise((resolve, reject) => {
    const server = net.createServer();
    server.once('error', reject);
    server.listen(0, '127.0.0.1', () => {
      const { port } = server.address();
      server.close(() => resolve(port));
    });
  });
}

const sleep = (ms) => new Promise((resolve) => setTimeout(resolve, ms));

// GETs a resource of a host's inspection API, answering the parsed JSON.
async function getJson(url, path, headers = {}) {
  const reply = await fetch(`${url}/api/${path}`, { headers, signal: AbortSignal.timeout(5000) });
  if (!reply.ok) throw new Error(`GET ${path}: HTTP ${reply.status}`);
  return reply.json();
}

// Starts nox-demo on a free port (another one if that port was taken meanwhile) and
// waits until it answers. The caller kills it.
async function startDemo(extraArguments = [], headers = {}) {
  for (let attempt = 0; attempt < 10; ++attempt) {
    const port = await freePort();
    const env = { ...process.env };
    delete env.NOX_INSPECT_TOKEN;
    const child = spawn(demo, ['--port', String(port), '--tick-ms', '5', ...extraArguments], { stdio: 'ignore', env });
    const url = `http://127.0.0.1:${port}`;
    for (let wait = 0; wait < 100 && child.exitCode === null; ++wait) {
      try {
        await getJson(url, 'debug', headers);
        return { child, url };
      } catch {
        await sleep(50);
      }
    }
    child.kill('SIGKILL');
  }
  throw new Error('nox-demo never answered');
}

// Resolves when the child has exited, with its exit code (null when killed).
function exited(child) {
  if (child.exitCode !== null || child.signalCode !== null) return Promise.resolve(child.exitCode);
  return new Promise((resolve) => child.once('exit', (code) => resolve(code)));
}

// A protocol client of a new nox-dap on standard input and output. `trace` names a
// file where the adapter writes every message.
async function startClient(trace) {
  const env = { ...process.env };
  // Tests give tokens explicitly.
  delete env.NOX_INSPECT_TOKEN;
  if (trace) env.NOX_DAP_TRACE = trace;
  else delete env.NOX_DAP_TRACE;
  const client = new DebugClient(adapter, '--stdio', 'nox', { env });
  client.defaultTimeout = 10000;
  await client.start();
  return client;
}

// Whether this nox-demo can require a bearer token.
function demoTakesToken() {
  const { execFileSync } = require('node:child_process');
  return execFileSync(demo, ['--help'], { encoding: 'utf8' }).includes('--token');
}

// Ends the client's session and its adapter, answering the adapter's exit status: 0
// unless it crashed or (in sanitizer builds) leaked.
async function stopClient(client) {
  const child = client._adapterProcess;
  await client.stop();
  return child ? exited(child) : 0;
}

// Sends a request and waits for the event it should cause, listening before sending.
async function requestAndWait(client, event, send) {
  const waited = client.waitForEvent(event);
  const response = await send();
  return { response, event: await waited };
}

module.exports = { demoTakesToken, adapter, freePort, sleep, getJson, startDemo, exited, startClient, stopClient, requestAndWait };
