// A browser without a screen that shows the viewer.

import {spawn} from 'node:child_process';
import {once} from 'node:events';
import {createInterface} from 'node:readline';
import {fileURLToPath} from 'node:url';
import {chromium} from 'playwright-core';

const VIEW = fileURLToPath(new URL('../../../scripts/view', import.meta.url));

let browser = null;

// Calls use(page) with a new page of the one browser. size: as playwright takes it.
export async function withPage(size, use) {
  browser ??= await chromium.launch({
    executablePath: process.env.CHROMIUM ?? '/usr/bin/chromium',
    // Drawn by the processor: no graphics card is needed, and the page around the model is cheaper
    // without one. The sandbox cannot start as root, and containers have little shared memory.
    args: ['--use-angle=swiftshader', '--enable-unsafe-swiftshader', '--disable-gpu-compositing',
      '--no-sandbox', '--disable-dev-shm-usage'],
  });
  const page = await browser.newPage(size);
  try {
    await use(page);
  } finally {
    await page.close();
  }
}

// The program ends only after this.
export async function closeBrowser() {
  await browser?.close();
  browser = null;
}

// Serves the directory beside the viewer as well, and calls use(page, address).
export async function withViewer(directory, size, use) {
  const server = spawn(VIEW, [directory, '0'], {stdio: ['ignore', 'pipe', 'inherit']});
  try {
    const [line] = await once(createInterface(server.stdout), 'line');
    const [address] = line.match(/^http:[^? ]*/);
    await withPage(size, (page) => use(page, address));
  } finally {
    server.kill();
  }
}

// Waits until the viewer has opened its files. Resolves to 'ready' or 'failed'.
export async function opened(page) {
  await page.waitForFunction(() => ['ready', 'failed'].includes(document.body.dataset.state), null,
    {timeout: 120000});
  return page.evaluate(() => document.body.dataset.state);
}
