// The page on the screen: OpenSeadragon, and what the viewer asks of it.

import OpenSeadragon from 'openseadragon';
import {tileSource, type Damage, type Mode, type Page} from '../src/index';

const kMaxPixelRatio = 16;
const kStep = 1.5;

/** Quarter turns and mirroring that show a page as its orientation tag says. */
const kUpright: Record<number, [number, boolean]> = {
    1: [0, false], 2: [0, true], 3: [180, false], 4: [180, true], 5: [90, true], 6: [90, false], 7: [270, true], 8: [270, false],
};

export class Stage {
    readonly viewer: OpenSeadragon.Viewer;
    mode: Mode = 'grey';
    /** Called when what is shown has changed. */
    onMove?: () => void;
    /** Called each time all tiles of the view are there. */
    onComplete?: () => void;
    private page?: Page;
    private readonly addToNavigator: OpenSeadragon.Viewer['addTiledImage'];

    constructor(element: HTMLElement, private readonly onError: (error: Error) => void) {
        const still = matchMedia('(prefers-reduced-motion: reduce)').matches;
        this.viewer = OpenSeadragon({
            element,
            // Without a graphics processor the other drawers are slow, and tiles change often enough to be copied often.
            drawer: 'canvas',
            showNavigationControl: false,
            showNavigator: true, navigatorPosition: 'BOTTOM_RIGHT', navigatorSizeRatio: .16, navigatorAutoFade: false,
            navigatorBackground: 'var(--desk)', navigatorBorderColor: 'var(--line)', navigatorDisplayRegionColor: 'var(--accent)',
            navigatorOpacity: 1,
            preserveImageSizeOnResize: true, immediateRender: true, maxTilesPerFrame: 16, imageLoaderLimit: 16, maxImageCacheCount: 100, timeout: 120000,
            maxZoomPixelRatio: kMaxPixelRatio, minZoomImageRatio: .5, visibilityRatio: .2, crossOriginPolicy: false,
            animationTime: still ? 0 : .5, zoomPerScroll: 1.25,
            gestureSettingsMouse: {clickToZoom: false, dblClickToZoom: true},
        });
        this.viewer.navigator.element.hidden = true;
        // Nothing is drawn for the navigator before it is seen.
        const {navigator} = this.viewer;
        this.addToNavigator = navigator.addTiledImage.bind(navigator);
        navigator.addTiledImage = () => {};
        for (const event of ['animation', 'animation-finish', 'open', 'resize', 'rotate', 'flip'] as const)
            this.viewer.addHandler(event, () => this.moved());
        this.viewer.addHandler('animation-finish', () => this.snap());
        // All keys are the viewer's own.
        this.viewer.addHandler('canvas-key', (event) => { (event as {preventDefaultAction: boolean}).preventDefaultAction = true; });
    }

    show(page: Page): void {
        this.page = page;
        this.viewer.addOnceHandler('open', () => {
            const item = this.viewer.world.getItemAt(0);
            item.addHandler('fully-loaded-change', ({fullyLoaded}) => { if (fullyLoaded) this.onComplete?.(); });
            if (item.getFullyLoaded()) this.onComplete?.();
            for (const damage of page.damage.values()) this.mark(damage);
        });
        const [turn, flip] = kUpright[page.info.orientation]!;
        this.viewer.viewport?.setRotation(turn, true);
        this.viewer.viewport?.setFlip(flip);
        this.viewer.open(this.tiles(page, this.homeSize(page)));
        this.viewer.addOnceHandler('open', () => {
            this.viewer.viewport.setRotation(turn, true);
            this.viewer.viewport.setFlip(flip);
            this.viewer.viewport.goHome(true);
        });
    }
    /** All tiles are drawn anew. */
    redraw(): void {
        this.viewer.world.resetItems();
        this.viewer.navigator.world.resetItems();
    }

    private tiles(page: Page, coarsest?: number) {
        return tileSource(page, {coarsest, look: () => ({mode: this.mode}), onError: this.onError}) as never;
    }
    /** The longer side of a page that is seen whole: to draw it smaller first would take as long as to draw it. */
    private homeSize({width, height}: Page): number {
        const {x, y} = this.viewer.viewport.getContainerSize();
        return Math.max(1, devicePixelRatio * Math.max(width, height) * Math.min(x / width, y / height));
    }

    /** Pixels of the screen for one of the page. */
    get scale(): number {
        const {viewport} = this.viewer;
        return this.page && viewport ? viewport.viewportToImageZoom(viewport.getZoom(true)) * devicePixelRatio : 1;
    }
    set scale(scale: number) {
        const {viewport} = this.viewer;
        viewport.zoomTo(viewport.imageToViewportZoom(scale / devicePixelRatio));
        viewport.applyConstraints();
    }
    zoom(steps: number): void {
        this.viewer.viewport.zoomBy(kStep ** steps);
        this.viewer.viewport.applyConstraints();
    }
    fit(): void { this.viewer.viewport.goHome(); }
    turn(quarters: number): void {
        const {viewport} = this.viewer;
        // A mirrored page turns the other way round by itself.
        viewport.rotateBy(90 * quarters * (viewport.getFlip() ? -1 : 1));
    }
    mirror(): void { this.viewer.viewport.toggleFlip(); }
    pan(x: number, y: number): void {
        const {viewport} = this.viewer, size = viewport.getContainerSize();
        viewport.panBy(viewport.deltaPointsFromPixels(new OpenSeadragon.Point(x * size.x, y * size.y)));
        viewport.applyConstraints();
    }
    goTo({left, top, width, height}: Damage): void {
        this.viewer.viewport.fitBounds(this.viewer.viewport.imageToViewportRectangle(left, top, width, height), false);
    }

    /** Shows where the page is damaged. */
    mark({left, top, width, height}: Damage): void {
        const element = Object.assign(document.createElement('div'), {className: 'damaged'});
        this.viewer.addOverlay({element, location: this.viewer.viewport.imageToViewportRectangle(left, top, width, height),
                                rotationMode: OpenSeadragon.OverlayRotationMode.BOUNDING_BOX});
    }

    /** At 100 % pixels of the page lie on pixels of the screen, not between them. */
    private snap(): void {
        const {viewport} = this.viewer;
        if (!this.page || Math.abs(this.scale - 1) > 1e-3) return;
        const corner = viewport.pixelFromPoint(viewport.imageToViewportCoordinates(0, 0), true).times(devicePixelRatio);
        const off = corner.minus(new OpenSeadragon.Point(Math.round(corner.x), Math.round(corner.y))).divide(devicePixelRatio);
        if (Math.hypot(off.x, off.y) > 1e-3) viewport.panBy(viewport.deltaPointsFromPixels(off), true);
    }

    private showNavigator(): void {
        const {navigator, world} = this.viewer;
        navigator.updateSize();
        if (navigator.world.getItemCount() === 0)
            this.addToNavigator({tileSource: this.tiles(this.page!), originalTiledImage: world.getItemAt(0)} as never);
    }

    private moved(): void {
        const {viewport, navigator} = this.viewer;
        if (!this.page || !viewport) return;
        // While all is seen a small picture of it is of no use, and is not drawn.
        const whole = viewport.getZoom(true) < 1.2 * viewport.getHomeZoom();
        if (whole !== navigator.element.hidden) {
            navigator.element.hidden = whole;
            if (!whole) this.showNavigator();
        }
        // Enlarged pixels have edges; reduced ones are averaged.
        this.viewer.drawer.setImageSmoothingEnabled(this.scale < 2);
        this.onMove?.();
    }
}
